#pragma once

#include <array>
#include <cstdint>

/// The layout of a ZEB file. All integers are unsigned and big-endian.
///
///     "ZEB1"                                       4 bytes
///     header size: bytes that follow this field    4 bytes
///     title length                                 2 bytes
///     title, and a zero byte if its length is odd
///     fixed fields                                 24 bytes, offsets below
///     frame index: a file offset per second        4 bytes each
///     one-second blocks, back to back:
///         block length: bytes that follow          4 bytes
///         sound size, sound                        4 bytes + sound
///         frame size, frame; fps times             4 bytes + frame
namespace zeb::layout {

inline constexpr std::array<std::uint8_t, 4> magic{'Z', 'E', 'B', '1'};

/// Offset of the first byte that the header size counts: the title length.
inline constexpr std::uint64_t headerBody = 8;
inline constexpr std::size_t titleLengthSize = 2;
inline constexpr std::size_t maxTitleLength = 65535;

/// From the start of the fixed fields: width, height, fps, qlMode (2 bytes each), then
inline constexpr std::uint64_t totalFrames = 8;          // 4 bytes
inline constexpr std::uint64_t maxSecondBlockSize = 12;  // 4 bytes
// sample rate, audio channels, options, reserved (2 bytes each)
inline constexpr std::size_t fixedFieldsSize = 24;

/// Sound frames per second; samples are 8 bits unsigned, 128 = silence, channels interleaved.
inline constexpr std::uint16_t sampleRate = 20000;
/// Bit 0 of the options: the movie is meant to loop.
inline constexpr std::uint16_t loopOption = 1;

/// Width of a size field and of an index entry.
inline constexpr std::size_t wordSize = 4;
/// The largest value of such a field, and so the largest offset of a block.
inline constexpr std::uint64_t maxWord = 0xFFFFFFFF;

}  // namespace zeb::layout
