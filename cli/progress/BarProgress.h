#pragma once

#include <string>

#include "cli/progress/Pacer.h"
#include "cli/progress/ProgressReporter.h"

namespace zeb::cli {

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
