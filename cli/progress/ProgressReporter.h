#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/encode/EncodeJob.h"
#include "cli/progress/ProgressStyle.h"
#include "cli/progress/SpeedMeter.h"
#include "conversion/forecast/SizeForecast.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"

namespace zeb::cli {

/// How far a conversion is.
struct ProgressState {
    std::int64_t framesDone = 0;
    std::int64_t totalFrames = 1;
    int fps = 1;                             ///< of the movie
    std::uint64_t bytes = 0;                 ///< written so far
    double speed = 0;                        ///< frames per second of work; 0 when not known yet
    std::optional<double> remainingSeconds;  ///< estimated time left; nothing when not known yet

    double fraction() const { return static_cast<double>(framesDone) / static_cast<double>(totalFrames); }
    /// Seconds of the movie that are complete.
    std::int64_t secondsDone() const { return framesDone / fps; }
};

/// A finished conversion.
struct EncodeSummary {
    FrameSize size;
    std::int64_t frames = 0;   ///< 0, and no size, when it made sound only
    std::int64_t seconds = 0;  ///< of the movie
    std::uint64_t bytes = 0;   ///< the file's size
    double elapsedSeconds = 0;
};

/// A conversion that did not finish.
struct EncodeFailure {
    std::string message;  ///< for a person, with what became of the output
    ExitCode exitCode = ExitCode::conversionFailed;
    std::int64_t keptSeconds =
        0;  ///< seconds of the shorter movie that the output was made into; 0 = no output
};

enum class Verbosity { quiet, verbose };

/// Shows a person or a program what a conversion does. Warnings and failures always go to standard error, the
/// log if it is wanted; the styles differ in what they put on standard output. For one job after the other,
/// on one thread.
class ProgressReporter {
public:
    ProgressReporter(Console& console, Verbosity verbosity) : m_console(console), m_verbosity(verbosity) {}
    ProgressReporter(const ProgressReporter&) = delete;
    ProgressReporter& operator=(const ProgressReporter&) = delete;
    virtual ~ProgressReporter() = default;

    /// A job is taken up.
    virtual void began(const EncodeJob& job);
    /// Its source has been analysed and the work starts.
    virtual void planned(const Settings& settings, const ConversionPlan& plan);
    /// How large the movie will be; after `planned`.
    virtual void forecast(const Settings& settings, const SizeForecast& forecast);
    /// The same, when the forecast is all that was asked for.
    virtual void estimated(const Settings& settings, const SizeForecast& forecast);
    /// Called very often.
    virtual void advanced(const ProgressState& state) = 0;
    /// A line of the conversion's log.
    virtual void logged(const std::string& line);
    virtual void warned(const std::string& line);
    virtual void finished(const EncodeSummary& summary);
    virtual void failed(const EncodeFailure& failure);

protected:
    Console& console() { return m_console; }
    const EncodeJob& job() const { return m_job; }
    bool isVerbose() const { return m_verbosity == Verbosity::verbose; }

private:
    Console& m_console;
    Verbosity m_verbosity;
    EncodeJob m_job;
};

/// `automatic` looks at where standard output leads.
std::unique_ptr<ProgressReporter> makeProgressReporter(ProgressStyle style, Console& console,
                                                       Verbosity verbosity);

/// Lines on standard output: what is going to be made, then how far it is at whole seconds of the movie,
/// about one line per second of work.
class PlainProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void planned(const Settings& settings, const ConversionPlan& plan) override;
    void forecast(const Settings& settings, const SizeForecast& forecast) override;
    void advanced(const ProgressState& state) override;

private:
    Pacer m_pacer{std::chrono::seconds(1)};
    std::int64_t m_secondsShown = 0;
};

}  // namespace zeb::cli
