#include "codec/ColourReduction.h"

#include <gtest/gtest.h>

#include <array>

#include "tests/codec/ReferenceCodec.h"
#include "tests/codec/SyntheticPictures.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(PackRGB565, MatchesReferenceForEveryPixelCount) {
    for (int count = 0; count < 100; ++count) {
        const Bytes rgba = synthetic::noise(count, 1, static_cast<unsigned>(count));
        Bytes expected(rgba.size() / 2), actual(rgba.size() / 2);
        reference::packRGB565(rgba, expected);
        packRGB565(rgba, actual);
        EXPECT_EQ(actual, expected) << count;
    }
}

// Every channel value in every row, at widths around the vector sizes.
TEST(PackRGB565Rows, MatchesExactFormulaInEveryRow) {
    constexpr std::array<int, 8> order = {0, 4, 2, 6, 1, 5, 3, 7};
    for (const int width : {1, 7, 33, 256}) {
        Bytes rgba;
        for (int i = 0; i < 11 * 256; ++i)
            for (const int channel : {i, i + 100, 255 - i, i})
                rgba.push_back(static_cast<std::uint8_t>(channel));
        rgba.resize(rgba.size() / static_cast<std::size_t>(4 * width) * static_cast<std::size_t>(4 * width));
        Bytes actual(rgba.size() / 2);
        packRGB565Rows(rgba, width, actual);
        for (std::size_t i = 0; i < rgba.size() / 4; ++i) {
            const int rank = order[i / static_cast<std::size_t>(width) % 8];
            const auto level = [&](std::size_t channel, int levels) {
                return (16 * levels * rgba[4 * i + channel] + 255 * (2 * rank + 1)) / (16 * 255);
            };
            ASSERT_EQ(actual[2 * i] | actual[2 * i + 1] << 8,
                      level(0, 31) << 11 | level(1, 63) << 5 | level(2, 31))
                << i << ", width " << width;
        }
    }
}

void expectEqualsPlainLoop(const Bytes& rgba, int width, int height, int colours, const std::string& name) {
    LuminanceQuantiser quantiser(colours);
    std::vector<double> luma;
    Bytes expected(rgba.size() / 4);
    Bytes actual(expected.size(), 0xEE);
    for (const bool dither : {false, true}) {
        reference::quantizeLuma(rgba, width, height, colours, dither, luma, expected);
        if (dither) {
            quantiser.dither(rgba, width, height, actual);
        } else {
            quantiser.quantise(rgba, actual);
        }
        ASSERT_TRUE(actual == expected) << name << ", " << width << " x " << height << ", " << colours
                                        << " colours" << (dither ? ", dithered" : "");
    }
}

TEST(LuminanceQuantiser, MatchesReferenceForShapesAndColourCounts) {
    for (int width = 1; width <= 20; ++width)
        for (int height = 1; height <= 18; ++height)
            expectEqualsPlainLoop(synthetic::noise(width, height, 5), width, height, 4, "noise");
    for (const int colours : {-1, 0, 1, 2, 3, 5, 8, 256}) {
        expectEqualsPlainLoop(synthetic::noise(33, 27, 7), 33, 27, colours, "noise");
        expectEqualsPlainLoop(synthetic::natural(64, 48, 3), 64, 48, colours, "natural");
    }
}

TEST(LuminanceQuantiser, MatchesReferenceForWholeFrames) {
    expectEqualsPlainLoop(synthetic::natural(512, 288, 1), 512, 288, 4, "natural");
    expectEqualsPlainLoop(synthetic::noise(511, 285, 1), 511, 285, 4, "noise");
    // Even areas produce the same sums repeatedly, some of them next to a threshold.
    for (int grey = 0; grey < 256; ++grey) {
        const auto byte = static_cast<std::uint8_t>(grey);
        expectEqualsPlainLoop(synthetic::flat(96, 64, byte, byte, byte), 96, 64, 4, "grey");
    }
    // Far to the right of a bright spot, diffused errors become denormal numbers.
    Bytes spot = synthetic::flat(2048, 16, 0, 0, 0);
    std::fill_n(spot.begin() + 8, 3, std::uint8_t{20});
    expectEqualsPlainLoop(spot, 2048, 16, 4, "spot");
}

// Values for which the last bit of the sum decides the level.
TEST(LuminanceQuantiser, MatchesReferenceForColoursAtThresholds) {
    Bytes rgba;
    for (const int sum : {425000, 1275000, 2125000}) {
        for (int red = 0; red < 256; ++red) {
            for (int green = 0; green < 256; ++green) {
                const int rest = sum - 2126 * red - 7152 * green;
                if (rest < 0 || rest % 722 != 0 || rest / 722 > 255) continue;
                rgba.insert(rgba.end(), {static_cast<std::uint8_t>(red), static_cast<std::uint8_t>(green),
                                         static_cast<std::uint8_t>(rest / 722), 255});
            }
        }
    }
    ASSERT_GT(rgba.size(), 100U);
    expectEqualsPlainLoop(rgba, static_cast<int>(rgba.size() / 4), 1, 4, "thresholds");
}

}  // namespace
}  // namespace zeb
