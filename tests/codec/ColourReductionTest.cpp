#include "codec/ColourReduction.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/codec/ReferenceCodec.h"
#include "tests/codec/SyntheticPictures.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(PackRGB565, StoresRoundedLevelsLowByteFirst) {
    struct Case {
        std::array<std::uint8_t, 4> rgba;
        std::array<std::uint8_t, 2> bytes;
    };
    const Case cases[] = {
        {{255, 255, 255, 255}, {0xFF, 0xFF}}, {{255, 0, 0, 255}, {0x00, 0xF8}},
        {{0, 255, 0, 255}, {0xE0, 0x07}},     {{0, 0, 255, 255}, {0x1F, 0x00}},
        {{8, 4, 8, 255}, {0x21, 0x08}},       {{128, 128, 128, 0}, {0x10, 0x84}},
    };
    for (const Case& testCase : cases) {
        std::array<std::uint8_t, 2> bytes{};
        packRGB565(testCase.rgba, bytes);
        EXPECT_EQ(bytes, testCase.bytes) << int{testCase.rgba[0]} << " " << int{testCase.rgba[1]};
    }
}

TEST(PackRGB565, EqualsPlainLoopForEveryLevelAndCount) {
    for (std::size_t count = 0; count < 80; ++count) {
        const Bytes rgba = synthetic::noise(static_cast<int>(count), 1, static_cast<unsigned>(count));
        Bytes expected(count * 2);
        Bytes actual(count * 2);
        reference::packRGB565(rgba, expected);
        packRGB565(rgba, actual);
        ASSERT_EQ(actual, expected) << count;
    }
    Bytes everyLevel;
    for (int channel = 0; channel < 3; ++channel) {
        for (int level = 0; level < 256; ++level) {
            std::array<std::uint8_t, 4> pixel{37, 200, 90, 1};
            pixel[static_cast<std::size_t>(channel)] = static_cast<std::uint8_t>(level);
            everyLevel.insert(everyLevel.end(), pixel.begin(), pixel.end());
        }
    }
    Bytes expected(everyLevel.size() / 2);
    Bytes actual(expected.size());
    reference::packRGB565(everyLevel, expected);
    packRGB565(everyLevel, actual);
    EXPECT_EQ(actual, expected);
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

TEST(LuminanceQuantiser, EqualsPlainLoopForEverySmallShape) {
    for (int width = 1; width <= 20; ++width) {
        for (int height = 1; height <= 18; ++height) {
            const auto seed = static_cast<unsigned>(100 * width + height);
            expectEqualsPlainLoop(synthetic::noise(width, height, seed), width, height, 4, "noise");
        }
    }
}

TEST(LuminanceQuantiser, EqualsPlainLoopForEveryNumberOfColours) {
    for (const int colours : {-1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 17, 256}) {
        for (const auto& [width, height] : {std::pair{1, 1}, {1, 40}, {40, 1}, {33, 27}, {64, 48}}) {
            expectEqualsPlainLoop(synthetic::noise(width, height, 7), width, height, colours, "noise");
            expectEqualsPlainLoop(synthetic::natural(width, height, 3), width, height, colours, "natural");
        }
    }
}

TEST(LuminanceQuantiser, EqualsPlainLoopForWholeFrames) {
    for (unsigned seed = 0; seed < 3; ++seed) {
        expectEqualsPlainLoop(synthetic::natural(512, 288, seed), 512, 288, 4, "natural");
        expectEqualsPlainLoop(synthetic::noise(511, 285, seed), 511, 285, 4, "noise");
    }
    // Even areas bring about the same sums again and again, some of them next to a threshold.
    for (int grey = 0; grey < 256; ++grey) {
        const auto byte = static_cast<std::uint8_t>(grey);
        expectEqualsPlainLoop(synthetic::flat(96, 64, byte, byte, byte), 96, 64, 4, "grey");
        expectEqualsPlainLoop(synthetic::flat(96, 64, byte, 90, 160), 96, 64, 4, "colour");
    }
    // Errors fade to denormal numbers far right of a bright spot.
    Bytes spot = synthetic::flat(2048, 16, 0, 0, 0);
    for (std::size_t i = 0; i < 3; ++i)
        spot[8 + i] = 20;
    expectEqualsPlainLoop(spot, 2048, 16, 4, "spot");
}

// The values at which the arithmetic's last bit decides about the level.
TEST(LuminanceQuantiser, EqualsPlainLoopForColoursAtTheThresholds) {
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

TEST(LuminanceQuantiser, KeepsBlackWhiteAndTheAverage) {
    LuminanceQuantiser quantiser(4);
    Bytes indices(64 * 64);
    for (const bool dither : {false, true}) {
        for (const auto& [grey, index] : {std::pair<std::uint8_t, std::uint8_t>{0, 0}, {255, 3}}) {
            const Bytes rgba = synthetic::flat(64, 64, grey, grey, grey);
            if (dither) {
                quantiser.dither(rgba, 64, 64, indices);
            } else {
                quantiser.quantise(rgba, indices);
            }
            EXPECT_EQ(indices, Bytes(64 * 64, index));
        }
    }
    const Bytes grey = synthetic::flat(64, 64, 102, 102, 102);  // a luminance of 0.4
    quantiser.quantise(grey, indices);
    EXPECT_EQ(indices, Bytes(64 * 64, 1));
    quantiser.dither(grey, 64, 64, indices);
    double sum = 0;
    for (const std::uint8_t index : indices) {
        ASSERT_TRUE(index == 1 || index == 2);
        sum += index;
    }
    EXPECT_NEAR(sum / (64 * 64), 1.2, 0.01);
}

}  // namespace
}  // namespace zeb
