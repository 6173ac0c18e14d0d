#include "conversion/export/FrameScaling.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

namespace zeb {
namespace {

constexpr std::size_t channels = 4;

/// Reduces one direction: `count` values, `step` bytes apart, become `reduced` values. Each target covers
/// count / reduced sources. In units of 1 / reduced the weights are integers.
void reduceLine(const std::uint8_t* source, std::size_t step, std::int64_t count, std::uint8_t* target,
                std::size_t targetStep, std::int64_t reduced) {
    for (std::int64_t i = 0; i < reduced; ++i) {
        const std::int64_t begin = i * count;
        const std::int64_t end = begin + count;
        std::array<std::int64_t, channels> sums{};
        for (std::int64_t k = begin / reduced; k * reduced < end; ++k) {
            const std::int64_t weight = std::min((k + 1) * reduced, end) - std::max(k * reduced, begin);
            for (std::size_t c = 0; c < channels; ++c)
                sums[c] += weight * source[static_cast<std::size_t>(k) * step + c];
        }
        for (std::size_t c = 0; c < channels; ++c)
            target[static_cast<std::size_t>(i) * targetStep + c] =
                static_cast<std::uint8_t>((sums[c] + count / 2) / count);
    }
}

}  // namespace

FrameImage reducedImage(FrameImage image, int longestSide) {
    const int side = std::max(image.width, image.height);
    if (side <= longestSide) return image;
    const auto reduced = [&](int length) {
        return static_cast<int>(std::max<std::int64_t>(std::int64_t{length} * longestSide / side, 1));
    };
    const int width = reduced(image.width);
    const int height = reduced(image.height);
    const std::size_t row = static_cast<std::size_t>(image.width) * channels;
    const std::size_t reducedRow = static_cast<std::size_t>(width) * channels;
    std::vector<std::uint8_t> narrow(reducedRow * static_cast<std::size_t>(image.height));
    for (std::size_t y = 0; y < static_cast<std::size_t>(image.height); ++y)
        reduceLine(&image.pixels[y * row], channels, image.width, &narrow[y * reducedRow], channels, width);
    FrameImage result;
    result.width = width;
    result.height = height;
    result.pixels.resize(reducedRow * static_cast<std::size_t>(height));
    for (std::size_t x = 0; x < reducedRow; x += channels)
        reduceLine(&narrow[x], reducedRow, image.height, &result.pixels[x], reducedRow, height);
    return result;
}

FrameImage enlargedImage(const FrameImage& image, int scale) {
    FrameImage large{image.width * scale, image.height * scale, {}};
    const std::size_t rowBytes = static_cast<std::size_t>(large.width) * 4;
    large.pixels.resize(rowBytes * static_cast<std::size_t>(large.height));
    const std::uint8_t* source = image.pixels.data();
    std::uint8_t* target = large.pixels.data();
    for (int y = 0; y < image.height; ++y) {
        const std::uint8_t* row = target;
        for (int x = 0; x < image.width; ++x, source += 4) {
            for (int i = 0; i < scale; ++i, target += 4)
                std::memcpy(target, source, 4);
        }
        for (int i = 1; i < scale; ++i, target += rowBytes)
            std::memcpy(target, row, rowBytes);
    }
    return large;
}

FrameImage blackImage(int width, int height) {
    FrameImage image{width, height, {}};
    image.pixels.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4, 0);
    for (std::size_t i = 3; i < image.pixels.size(); i += 4)
        image.pixels[i] = 255;
    return image;
}

FrameImage fittedImage(const FrameImage& image, int width, int height) {
    FrameImage result = blackImage(width, height);
    const auto stride = [](int side) { return static_cast<std::size_t>(side) * 4; };
    for (int y = 0; y < std::min(height, image.height); ++y) {
        const auto row = static_cast<std::size_t>(y);
        std::memcpy(result.pixels.data() + row * stride(width),
                    image.pixels.data() + row * stride(image.width), stride(std::min(width, image.width)));
    }
    return result;
}

}  // namespace zeb
