#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// Offsets and sizes in a sprite record, which `codec/SpriteEncoder.h` describes.
namespace zeb::sprite {

inline constexpr std::size_t headerSize = 24;
inline constexpr std::size_t formAt = 0;
inline constexpr std::size_t colourModeAt = 1;
inline constexpr std::size_t controlAt = 3;
inline constexpr std::size_t widthAt = 4;
inline constexpr std::size_t heightAt = 6;
inline constexpr std::size_t patternPointerAt = 12;  ///< relative to this field
inline constexpr std::size_t maskPointerAt = 16;     ///< relative to this field

// Bits of the control byte.
inline constexpr std::uint8_t maskCompressed = 0x80;
inline constexpr std::uint8_t patternCompressed = 0x40;
inline constexpr std::uint8_t alphaChannel = 0x20;

/// Offset of the Mode 4 pattern in the encoder's records: 8 zero bytes follow the header.
inline constexpr std::size_t mode4PatternAt = headerSize + 8;
/// Minimum width of a Mode 4 record.
inline constexpr int smallestMode4Width = 8;

/// Rows of patterns and masks are padded to multiples of 4 bytes.
constexpr std::int64_t paddedRow(std::int64_t bytes) {
    return (bytes + 3) / 4 * 4;
}

/// Bytes of a row in Mode 4: two for every 8 pixels.
constexpr std::int64_t mode4Row(std::int64_t width) {
    return paddedRow(2 * ((width + 7) / 8));
}

/// Bytes of a Mode 4 record of the encoder; they do not depend on the picture.
constexpr std::uint64_t mode4RecordBytes(int width, int height) {
    const std::int64_t rows = std::max(height, 1);
    return mode4PatternAt + static_cast<std::uint64_t>(mode4Row(std::max(width, smallestMode4Width)) * rows);
}

/// Upper bound for the bytes of a Mode 32 record of the encoder: two bytes per pixel and one control byte per
/// literal of 128 pixels. A shorter literal ends before a repeat, whose saving makes up for it.
constexpr std::uint64_t mostMode32RecordBytes(int width, int height) {
    constexpr std::uint64_t blockHeader = 8;
    constexpr std::uint64_t literalItems = 128;
    const auto pixels =
        static_cast<std::uint64_t>(std::max(width, 1)) * static_cast<std::uint64_t>(std::max(height, 1));
    return headerSize + blockHeader + 2 * pixels + (pixels + literalItems - 1) / literalItems;
}

}  // namespace zeb::sprite
