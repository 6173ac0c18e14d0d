#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace zeb::test {

/// A finished ZEB file, read byte by byte without the product's own code. Every field, size and index entry
/// must be exactly right.
struct StrictMovie {
    int width = 0;
    int height = 0;
    int fps = 0;
    int mode = 0;
    std::int64_t frames = 0;
    std::int64_t seconds = 0;
    int soundChannels = 0;
    bool loop = false;
    std::vector<std::uint8_t> sound;                 ///< of all seconds
    std::vector<std::vector<std::uint8_t>> records;  ///< of all frames
};

/// Throws `std::runtime_error` saying what is wrong. After an interruption the index may be longer than the
/// movie; its other entries are 0.
StrictMovie readStrictly(const std::string& path);

}  // namespace zeb::test
