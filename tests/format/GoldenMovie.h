#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "format/ZEBWriter.h"

/// A movie of two seconds, byte by byte. The writer must produce it and the reader must accept it. Its sound
/// is shorter than a second and its frames are no sprites: the container code does not check either.
namespace zeb::test::golden {

using Bytes = std::vector<std::uint8_t>;

struct Second {
    Bytes sound;
    std::vector<Bytes> frames;
};

inline MovieParameters parameters() {
    MovieParameters movie;
    movie.title = "QL!";
    movie.width = 16;
    movie.height = 8;
    movie.fps = 2;
    movie.qlMode = 32;
    movie.totalFrames = 4;
    movie.frameIndexCount = 2;
    movie.audioChannels = 1;
    movie.loop = true;
    return movie;
}

inline std::vector<Second> seconds() {
    return {{{0x80, 0x81, 0x7F}, {{0xA1, 0xA2}, {}}},
            {{0x80, 0x80, 0x80}, {{0xB1}, {0xC1, 0xC2, 0xC3, 0xC4, 0xC5}}}};
}

// Offsets in the file.
inline constexpr std::size_t totalFrames = 22;
inline constexpr std::size_t maxSecondBlockSize = 26;
inline constexpr std::size_t index = 38;
inline constexpr std::size_t firstBlock = 46;
inline constexpr std::size_t secondBlock = 67;

// clang-format off
inline Bytes movie() {
    return {
        'Z', 'E', 'B', '1',
        0x00, 0x00, 0x00, 0x26,                    // 38 bytes of header follow
        0x00, 0x03, 'Q', 'L', '!', 0x00,           // title, padded to an even length
        0x00, 0x10, 0x00, 0x08,                    // 16 x 8 pixels
        0x00, 0x02, 0x00, 0x20,                    // 2 frames per second, Mode 32
        0x00, 0x00, 0x00, 0x04,                    // 4 frames
        0x00, 0x00, 0x00, 0x19,                    // largest second: 25 bytes
        0x4E, 0x20, 0x00, 0x01, 0x00, 0x01, 0, 0,  // 20 kHz, mono, loop, reserved
        0x00, 0x00, 0x00, 0x2E,                    // index: second 0 at 46,
        0x00, 0x00, 0x00, 0x43,                    //        second 1 at 67

        0x00, 0x00, 0x00, 0x11,                    // 17 bytes follow
        0x00, 0x00, 0x00, 0x03, 0x80, 0x81, 0x7F,  // sound
        0x00, 0x00, 0x00, 0x02, 0xA1, 0xA2,        // frame 0
        0x00, 0x00, 0x00, 0x00,                    // frame 1, empty

        0x00, 0x00, 0x00, 0x15,                    // 21 bytes follow
        0x00, 0x00, 0x00, 0x03, 0x80, 0x80, 0x80,
        0x00, 0x00, 0x00, 0x01, 0xB1,
        0x00, 0x00, 0x00, 0x05, 0xC1, 0xC2, 0xC3, 0xC4, 0xC5,
    };
}
// clang-format on

/// The movie before its writer has finished it.
inline Bytes unfinishedMovie() {
    Bytes bytes = movie();
    std::fill_n(bytes.begin() + maxSecondBlockSize, 4, std::uint8_t{0});
    std::fill(bytes.begin() + index, bytes.begin() + firstBlock, std::uint8_t{0});
    return bytes;
}

/// The finished movie with its first second only. The index keeps its two entries.
inline Bytes firstSecondAlone() {
    Bytes bytes = unfinishedMovie();
    bytes.resize(secondBlock);
    bytes[totalFrames + 3] = 0x02;
    bytes[maxSecondBlockSize + 3] = 0x15;
    bytes[index + 3] = 0x2E;
    return bytes;
}

}  // namespace zeb::test::golden
