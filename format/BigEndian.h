#pragma once

#include <cstdint>
#include <span>
#include <vector>

/// Unsigned integers, most significant byte first.
namespace zeb::bigEndian {

inline std::uint16_t load16(std::span<const std::uint8_t, 2> bytes) {
    return static_cast<std::uint16_t>(bytes[0] << 8 | bytes[1]);
}

inline std::uint32_t load32(std::span<const std::uint8_t, 4> bytes) {
    return std::uint32_t{load16(bytes.first<2>())} << 16 | load16(bytes.last<2>());
}

inline void store32(std::span<std::uint8_t, 4> bytes, std::uint32_t value) {
    for (unsigned index = 0; index < 4; ++index)
        bytes[index] = static_cast<std::uint8_t>(value >> (24 - 8 * index));
}

inline void append16(std::vector<std::uint8_t>& bytes, std::uint16_t value) {
    bytes.push_back(static_cast<std::uint8_t>(value >> 8));
    bytes.push_back(static_cast<std::uint8_t>(value));
}

inline void append32(std::vector<std::uint8_t>& bytes, std::uint32_t value) {
    append16(bytes, static_cast<std::uint16_t>(value >> 16));
    append16(bytes, static_cast<std::uint16_t>(value));
}

}  // namespace zeb::bigEndian
