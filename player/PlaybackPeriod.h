#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace zeb {

/// Returns how long a frame stays on screen: 1 / fps, truncated to whole milliseconds.
inline std::chrono::milliseconds playbackPeriod(int fps) {
    const double period = 1.0 / std::max(fps, 1);
    return std::chrono::milliseconds{static_cast<std::int64_t>(period * 1000)};
}

}  // namespace zeb
