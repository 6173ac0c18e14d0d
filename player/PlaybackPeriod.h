#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

namespace zeb {

/// How long a frame stays on screen: the period in seconds, in whole milliseconds, the rest cut off.
inline std::chrono::milliseconds playbackPeriod(int fps) {
    const double period = 1.0 / std::max(fps, 1);
    return std::chrono::milliseconds{static_cast<std::int64_t>(period * 1000)};
}

}  // namespace zeb
