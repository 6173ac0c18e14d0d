#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <span>
#include <vector>

/// The codec's arithmetic as plain loops: slow, but easy to verify by reading. Tests compare the optimised
/// code with them byte for byte. Benchmarks use them as the baseline.
namespace zeb::reference {

using Bytes = std::vector<std::uint8_t>;

inline void packRGB565(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> pixels) {
    for (std::size_t i = 0; i < rgba.size() / 4; ++i) {
        const unsigned red = (rgba[4 * i] * 31U + 127U) / 255U;
        const unsigned green = (rgba[4 * i + 1] * 63U + 127U) / 255U;
        const unsigned blue = (rgba[4 * i + 2] * 31U + 127U) / 255U;
        pixels[2 * i] = static_cast<std::uint8_t>(((green & 7U) << 5) | blue);
        pixels[2 * i + 1] = static_cast<std::uint8_t>((red << 3) | (green >> 3));
    }
}

inline double luminance(const std::uint8_t* rgba) {
    return 0.2126 * rgba[0] / 255.0 + 0.7152 * rgba[1] / 255.0 + 0.0722 * rgba[2] / 255.0;
}

inline double quantise(double value, int levels) {
    const double clamped = value > 0.0 ? std::min(value, 1.0) : 0.0;  // NaN gives 0
    return std::clamp(std::round(clamped * levels), 0.0, static_cast<double>(levels));
}

/// `luma` is a work buffer of width x height entries.
inline void quantizeLuma(std::span<const std::uint8_t> rgba, int width, int height, int colours, bool dither,
                         std::vector<double>& luma, std::span<std::uint8_t> indices) {
    const int levels = colours < 1 ? 0 : colours - 1;
    const auto columns = static_cast<std::size_t>(width);
    const auto rows = static_cast<std::size_t>(height);
    luma.resize(columns * rows);
    for (std::size_t i = 0; i < luma.size(); ++i)
        luma[i] = luminance(&rgba[4 * i]);
    for (std::size_t y = 0; y < rows; ++y) {
        for (std::size_t x = 0; x < columns; ++x) {
            const std::size_t i = y * columns + x;
            const double value = luma[i];
            const double level = quantise(value, levels);
            indices[i] = static_cast<std::uint8_t>(level);
            if (!dither) continue;
            const double error = value - level / levels;
            if (x + 1 < columns) luma[i + 1] += error * 7 / 16;
            if (y + 1 < rows) {
                if (x > 0) luma[i + columns - 1] += error * 3 / 16;
                luma[i + columns] += error * 5 / 16;
                if (x + 1 < columns) luma[i + columns + 1] += error * 1 / 16;
            }
        }
    }
}

inline void compressRLE2(std::span<const std::uint8_t> raw, Bytes& packets) {
    const std::size_t count = raw.size() / 2;
    const auto word = [&](std::size_t i) { return raw[2 * i] | (raw[2 * i + 1] << 8); };
    std::size_t i = 0;
    while (i < count) {
        std::size_t run = 1;
        while (run < 128 && i + run < count && word(i + run) == word(i))
            ++run;
        if (run >= 2) {
            packets.push_back(static_cast<std::uint8_t>(257 - run));
            packets.push_back(raw[2 * i]);
            packets.push_back(raw[2 * i + 1]);
            i += run;
            continue;
        }
        std::size_t literal = 1;
        while (literal < 128 && i + literal < count) {
            const std::size_t j = i + literal;
            if (j + 1 < count && word(j) == word(j + 1)) break;
            ++literal;
        }
        packets.push_back(static_cast<std::uint8_t>(literal - 1));
        const auto words = raw.subspan(2 * i, 2 * literal);
        packets.insert(packets.end(), words.begin(), words.end());
        i += literal;
    }
}

inline std::optional<Bytes> expandRLE2(std::span<const std::uint8_t> block, std::size_t expected) {
    if (block.size() < 8 || std::memcmp(block.data(), "RLE", 3) != 0) return std::nullopt;
    if (block[3] != '1' && block[3] != '2' && block[3] != '4') return std::nullopt;
    const std::size_t itemSize = block[3] - static_cast<std::size_t>('0');
    std::size_t length = 0;
    for (std::size_t i = 4; i < 8; ++i)
        length = length << 8 | block[i];
    const std::size_t capacity = std::max(expected, length);
    Bytes output(std::min(capacity, block.size() * 129 * 4), 0);  // upper bound of the expanded size
    std::size_t in = 8;
    std::size_t out = 0;
    while (out < capacity && in < block.size()) {
        const std::size_t control = block[in++];
        if (control < 0x80) {
            const std::size_t bytes = (control + 1) * itemSize;
            if (in + bytes > block.size() || out + bytes > capacity) break;
            std::memcpy(&output[out], &block[in], bytes);
            in += bytes;
            out += bytes;
        } else {
            if (in + itemSize > block.size()) break;
            for (std::size_t n = 257 - control; n > 0 && out + itemSize <= capacity; --n, out += itemSize) {
                for (std::size_t k = 0; k < itemSize; ++k)
                    output[out + k] = block[in + k];
            }
            in += itemSize;
        }
    }
    if (out < expected) return std::nullopt;
    output.resize(expected);
    return output;
}

}  // namespace zeb::reference
