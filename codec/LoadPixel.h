#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "platform/base/ProcessorVersions.h"

namespace zeb {

/// Returns the RGBA pixel with red in the lowest bits, then green and blue.
ZEB_ALWAYS_INLINE std::uint32_t loadPixel(const std::uint8_t* rgba) {
    std::uint32_t pixel;
    std::memcpy(&pixel, rgba, sizeof pixel);
    if constexpr (std::endian::native == std::endian::big) pixel = __builtin_bswap32(pixel);
    return pixel;
}

}  // namespace zeb
