#pragma once

#include "cli/progress/ProgressReporter.h"
#include "cli/progress/SpeedMeter.h"

namespace zeb::cli {

/// One JSON object (RFC 8259, ASCII only) per line on standard output, flushed at once. Every object has
/// "type" and "input":
/// - "start": output, title, width, height, framesPerSecond, frames, seconds, mode, sourceWidth,
///   sourceHeight, sourceFramesPerSecond, sourceSeconds
/// - "forecast", after "start" or, for `--estimate`, alone: output, width, height, framesPerSecond, frames,
///   seconds, mode, bytes, bytesPerSecond, basis ("arithmetic", "samples" or "bound" (upper bound)), exact,
///   samples (number of encoded pictures), uncertainty (relative standard error of the samples, or null),
///   fits, formatEndsAt (the first second past 4 GiB, or null), freeSpace (bytes for the output, null =
///   unknown), spaceEndsAt (the first second without space, or null), suggestedFramesPerSecond and
///   suggestedSize (width, height), each enough to make it fit, or null
/// - "progress", at most ten times a second: frames, totalFrames, fraction (0 ... 1), bytes, speed (frames
///   processed per second, or null), remainingSeconds (or null)
/// - "log" and "warning": message
/// - "done": output, width, height, frames, seconds, bytes, elapsedSeconds
/// - "error": output, message, exitCode, keptSeconds (of the shortened movie at the output, 0 = none); after
///   an interrupt also for every input that was not begun
class JsonProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void began(const EncodeJob& job) override;
    void planned(const Settings& settings, const ConversionPlan& plan) override;
    void forecast(const Settings& settings, const SizeForecast& forecast) override;
    void estimated(const Settings& settings, const SizeForecast& forecast) override;
    void advanced(const ProgressState& state) override;
    void logged(const std::string& line) override;
    void warned(const std::string& line) override;
    void finished(const EncodeSummary& summary) override;
    void failed(const EncodeFailure& failure) override;

private:
    void writeMessage(const char* type, const std::string& line);

    Pacer m_pacer{std::chrono::milliseconds(100)};
    std::int64_t m_framesShown = 0;  ///< in the latest "progress"
};

}  // namespace zeb::cli
