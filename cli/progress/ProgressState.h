#pragma once

#include <cstdint>
#include <optional>

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

}  // namespace zeb::cli
