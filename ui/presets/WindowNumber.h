#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

namespace zeb {

/// A stored number as a window can show it: those beyond an int become its nearest value.
constexpr int windowNumber(std::int64_t number) {
    return static_cast<int>(
        std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

}  // namespace zeb
