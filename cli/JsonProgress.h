#pragma once

#include "cli/Pacer.h"
#include "cli/ProgressReporter.h"

namespace zeb::cli {

/// One JSON object (RFC 8259, ASCII only) per line on standard output, flushed at once. Every object has
/// "type" and "input":
/// - "start": output, title, width, height, framesPerSecond, frames, seconds, mode, sourceWidth,
/// sourceHeight,
///   sourceFramesPerSecond, sourceSeconds
/// - "progress", at most ten times a second: frames, totalFrames, fraction (0 ... 1), bytes, speed (frames
/// per
///   second of work or null), remainingSeconds (or null)
/// - "log" and "warning": message
/// - "done": output, width, height, frames, seconds, bytes, elapsedSeconds
/// - "error": output, message, exitCode, keptSeconds (of a shorter movie that the output was made into, 0 =
/// none)
class JsonProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void began(const EncodeJob& job) override;
    void planned(const Settings& settings, const ConversionPlan& plan) override;
    void advanced(const ProgressState& state) override;
    void logged(const std::string& line) override;
    void warned(const std::string& line) override;
    void finished(const EncodeSummary& summary) override;
    void failed(const EncodeFailure& failure) override;

private:
    void writeMessage(const char* type, const std::string& line);

    Pacer m_pacer{std::chrono::milliseconds(100)};
};

}  // namespace zeb::cli
