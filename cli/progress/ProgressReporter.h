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

/// Progress of a conversion.
struct ProgressState {
    std::int64_t framesDone = 0;
    std::int64_t totalFrames = 1;
    int fps = 1;                             ///< of the movie
    std::uint64_t bytes = 0;                 ///< written so far
    double speed = 0;                        ///< frames processed per second; 0 if not known yet
    std::optional<double> remainingSeconds;  ///< estimated; empty if not known yet

    double fraction() const { return static_cast<double>(framesDone) / static_cast<double>(totalFrames); }
    /// Complete seconds of the movie.
    std::int64_t secondsDone() const { return framesDone / fps; }
};

/// A finished conversion.
struct EncodeSummary {
    FrameSize size;
    std::int64_t frames = 0;   ///< 0, and no size, for sound only
    std::int64_t seconds = 0;  ///< of the movie
    std::uint64_t bytes = 0;   ///< the file's size
    double elapsedSeconds = 0;
};

/// A conversion that did not finish.
struct EncodeFailure {
    std::string message;  ///< for the user, with the state of the output
    ExitCode exitCode = ExitCode::conversionFailed;
    std::int64_t keptSeconds = 0;  ///< seconds of the shortened movie at the output; 0 = no output
};

enum class Verbosity { quiet, verbose };

/// Reports on conversions for a user or a program. Warnings and failures always go to standard error, and the
/// log if requested. The styles differ in their standard output. Handles jobs one after the other, on one
/// thread.
class ProgressReporter {
public:
    ProgressReporter(Console& console, Verbosity verbosity) : m_console(console), m_verbosity(verbosity) {}
    ProgressReporter(const ProgressReporter&) = delete;
    ProgressReporter& operator=(const ProgressReporter&) = delete;
    virtual ~ProgressReporter() = default;

    /// A job begins.
    virtual void began(const EncodeJob& job);
    /// The source of the job has been analysed and the work starts.
    virtual void planned(const Settings& settings, const ConversionPlan& plan);
    /// The forecast of the movie; after `planned`.
    virtual void forecast(const Settings& settings, const SizeForecast& forecast);
    /// The forecast, if only that was requested.
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

/// Creates a reporter. `automatic` depends on whether standard output is a terminal.
std::unique_ptr<ProgressReporter> makeProgressReporter(ProgressStyle style, Console& console,
                                                       Verbosity verbosity);

/// Prints lines on standard output: first the plan, then the progress at whole seconds of the movie, about
/// one line per second.
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
