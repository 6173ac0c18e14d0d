#include "codec/natural/Sharpening.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "platform/base/ProcessorVersions.h"

namespace zeb::natural {

namespace {

/// The blur has 9 taps, the binomial coefficients 1 8 28 56 70 56 28 8 1; their sum is 256.
constexpr std::size_t reach = 4;
constexpr std::size_t taps = 2 * reach + 1;
constexpr std::int32_t noise = 512;

/// Returns the weighted sum; `at(i)` is tap i of 0 ... 8.
template <typename Tap>
ZEB_ALWAYS_INLINE std::int32_t binomial(Tap at) {
    return at(0) + at(8) + 8 * (at(1) + at(7)) + 28 * (at(2) + at(6)) + 56 * (at(3) + at(5)) + 70 * at(4);
}

/// Writes the luma of a row (weights 77, 150, 29 of 256) with repeated edges, and the blurred row times 16.
ZEB_ALWAYS_INLINE void blurRow(const std::uint8_t* rgba, std::size_t width, std::int32_t* luma,
                               std::int32_t* blurred) {
    for (std::size_t x = 0; x < width; ++x)
        luma[reach + x] = 77 * rgba[4 * x] + 150 * rgba[4 * x + 1] + 29 * rgba[4 * x + 2];
    for (std::size_t i = 0; i < reach; ++i) {
        luma[i] = luma[reach];
        luma[reach + width + i] = luma[reach + width - 1];
    }
    for (std::size_t x = 0; x < width; ++x)
        blurred[x] = (binomial([&](std::size_t i) { return luma[x + i]; }) + 8) >> 4;
}

/// Blurs down the columns and writes the amounts of a row.
ZEB_ALWAYS_INLINE void computeAmounts(const std::int32_t* luma,
                                      const std::array<const std::int32_t*, taps>& rows, std::size_t width,
                                      std::int32_t strength, std::int32_t* amounts) {
    for (std::size_t x = 0; x < width; ++x) {
        const std::int32_t blurred = (binomial([&](std::size_t i) { return rows[i][x]; }) + 2048) >> 12;
        const std::int32_t difference = luma[x] - blurred;
        const std::int32_t sign = difference >> 31;
        const std::int32_t size = std::max((difference ^ sign) - sign - noise, 0);
        amounts[x] = (((size * strength + 128) >> 8) ^ sign) - sign;
    }
}

ZEB_FOR_AVX2 void blurRowAVX2(const std::uint8_t* rgba, std::size_t width, std::int32_t* luma,
                              std::int32_t* blurred) {
    blurRow(rgba, width, luma, blurred);
}

ZEB_FOR_AVX2 void computeAmountsAVX2(const std::int32_t* luma,
                                     const std::array<const std::int32_t*, taps>& rows, std::size_t width,
                                     std::int32_t strength, std::int32_t* amounts) {
    computeAmounts(luma, rows, width, strength, amounts);
}

}  // namespace

void Sharpening::setPicture(std::span<const std::uint8_t> rgba, int width, int height) {
    m_width = static_cast<std::size_t>(width);
    m_height = static_cast<std::size_t>(height);
    assert(rgba.size() == m_width * m_height * 4);
    const std::size_t stride = m_width + 2 * reach;
    m_luma.resize(stride * m_height);
    m_blurred.resize(m_width * m_height);
    m_amounts.resize(m_width);
    for (std::size_t y = 0; y < m_height; ++y) {
        const std::uint8_t* pixels = rgba.data() + y * m_width * 4;
        std::int32_t* luma = m_luma.data() + y * stride;
        std::int32_t* blurred = m_blurred.data() + y * m_width;
        if (processorHasAVX2()) {
            blurRowAVX2(pixels, m_width, luma, blurred);
        } else {
            blurRow(pixels, m_width, luma, blurred);
        }
    }
}

std::span<const std::int32_t> Sharpening::row(int y) {
    const auto row = static_cast<std::size_t>(y);
    std::array<const std::int32_t*, taps> rows{};
    for (std::size_t i = 0; i < taps; ++i) {
        const std::size_t tap = std::min(std::max(row + i, reach) - reach, m_height - 1);
        rows[i] = m_blurred.data() + tap * m_width;
    }
    const std::int32_t* luma = m_luma.data() + row * (m_width + 2 * reach) + reach;
    if (processorHasAVX2()) {
        computeAmountsAVX2(luma, rows, m_width, m_strength, m_amounts.data());
    } else {
        computeAmounts(luma, rows, m_width, m_strength, m_amounts.data());
    }
    return m_amounts;
}

}  // namespace zeb::natural
