#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

/// Where things stand in a sprite record, and how large they are; `codec/SpriteEncoder.h` describes it whole.
namespace zeb::sprite {

inline constexpr std::size_t headerSize = 24;
inline constexpr std::size_t formAt = 0;
inline constexpr std::size_t colourModeAt = 1;
inline constexpr std::size_t controlAt = 3;
inline constexpr std::size_t widthAt = 4;
inline constexpr std::size_t heightAt = 6;
inline constexpr std::size_t patternPointerAt = 12;  ///< counts from its own place
inline constexpr std::size_t maskPointerAt = 16;     ///< as well

// Bits of the control byte.
inline constexpr std::uint8_t maskCompressed = 0x80;
inline constexpr std::uint8_t patternCompressed = 0x40;
inline constexpr std::uint8_t alphaChannel = 0x20;

/// Where the encoder puts a Mode 4 pattern: 8 zeros lie before it.
inline constexpr std::size_t mode4PatternAt = headerSize + 8;
/// Narrower pictures are not made in Mode 4.
inline constexpr int smallestMode4Width = 8;

/// Rows of patterns and masks are padded to whole long words.
constexpr std::int64_t paddedRow(std::int64_t bytes) {
    return (bytes + 3) / 4 * 4;
}

/// Bytes of a row in Mode 4: two for every 8 pixels.
constexpr std::int64_t mode4Row(std::int64_t width) {
    return paddedRow(2 * ((width + 7) / 8));
}

/// Bytes of the encoder's Mode 4 record of this size: they do not depend on the picture.
constexpr std::uint64_t mode4RecordBytes(int width, int height) {
    const std::int64_t rows = std::max(height, 1);
    return mode4PatternAt + static_cast<std::uint64_t>(mode4Row(std::max(width, smallestMode4Width)) * rows);
}

/// The most bytes that the encoder's Mode 32 record of this size can have. Run lengths take two bytes for
/// each pixel and one for every literal of 128 pixels; a shorter literal ends before a repeat, which saves
/// its byte again.
constexpr std::uint64_t mostMode32RecordBytes(int width, int height) {
    constexpr std::uint64_t blockHeader = 8;
    constexpr std::uint64_t literalItems = 128;
    const auto pixels =
        static_cast<std::uint64_t>(std::max(width, 1)) * static_cast<std::uint64_t>(std::max(height, 1));
    return headerSize + blockHeader + 2 * pixels + (pixels + literalItems - 1) / literalItems;
}

}  // namespace zeb::sprite
