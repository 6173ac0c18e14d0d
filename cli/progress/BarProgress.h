#pragma once

#include <string>
#include <string_view>

#include "cli/progress/ProgressReporter.h"
#include "cli/progress/SpeedMeter.h"

/// The lines that tell a person how far a conversion is.

namespace zeb::cli {

/// "[#####.....]  50 %  123.4 fps  0:12 left  3.4 MB" in at most `columns` characters (0: unknown, taken as
/// 80). Where that is little, the size goes first, then the bar, the speed and the time left.
std::string barLine(const ProgressState& state, int columns);

/// "  50 %  125 of 250 frames  123.4 fps  0:12 left  3.4 MB"
std::string plainLine(const ProgressState& state);

/// `text` made printable and cut to fit `columns` (0: unknown, taken as 80).
std::string fittedLine(std::string_view text, int columns);

/// One line on standard output that is drawn over itself, at most ten times a second. Messages stand above
/// it.
class BarProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void began(const EncodeJob& job) override;
    void forecast(const Settings& settings, const SizeForecast& forecast) override;
    void advanced(const ProgressState& state) override;
    void logged(const std::string& line) override;
    void warned(const std::string& line) override;
    void finished(const EncodeSummary& summary) override;
    void failed(const EncodeFailure& failure) override;

private:
    // Replaces what stands on the line; `line` is printable and fits.
    void draw(const std::string& line);
    void clear() { draw(""); }

    Pacer m_pacer{std::chrono::milliseconds(100)};
    std::string m_line;      // what stands there now
    bool m_started = false;  // the first frame of the job is done
};

}  // namespace zeb::cli
