#pragma once

#include <string>
#include <string_view>

#include "cli/progress/ProgressReporter.h"
#include "cli/progress/SpeedMeter.h"

/// Progress lines for the user.

namespace zeb::cli {

/// Returns "[#####.....]  50 %  123.4 fps  0:12 left  3.4 MB" in at most `columns` characters (0: unknown,
/// use 80). In a narrow terminal the size is omitted first, then the bar, the speed and the remaining time.
std::string barLine(const ProgressState& state, int columns);

/// "  50 %  125 of 250 frames  123.4 fps  0:12 left  3.4 MB"
std::string plainLine(const ProgressState& state);

/// Escapes `text` and truncates it to `columns` (0: unknown, use 80).
std::string fittedLine(std::string_view text, int columns);

/// Redraws one line on standard output, at most ten times a second. Messages are printed above it.
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
    // Replaces the text on the line; `line` is printable and fits.
    void draw(const std::string& line);
    void clear() { draw(""); }

    Pacer m_pacer{std::chrono::milliseconds(100)};
    std::string m_line;      // text on the line now
    bool m_started = false;  // the first frame of the job is complete
};

}  // namespace zeb::cli
