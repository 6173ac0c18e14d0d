#include "codec/ColourControls.h"

#include <gtest/gtest.h>

#include <cmath>

#include "codec/ExactMath.h"
#include "tests/codec/SyntheticPictures.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

TEST(ExactMath, AgreesWithTheStandardLibrary) {
    for (double value = 1e-9; value < 40; value *= 1.0173) {
        EXPECT_NEAR(cubeRoot(value) / std::cbrt(value), 1, 1e-14) << value;
        for (const double exponent : {0.2, 1 / 1.3, 1.0, 2.4, 5.0})
            EXPECT_NEAR(power(value, exponent) / std::pow(value, exponent), 1, 1e-14)
                << value << "^" << exponent;
    }
    EXPECT_EQ(cubeRoot(0), 0);
    EXPECT_EQ(power(0, 2.4), 0);
    EXPECT_EQ(power(1, 2.4), 1);
}

/// The controls in their order, as separate steps.
std::array<double, 3> literallyAdjusted(const ColourControls& c, std::array<double, 3> rgb) {
    for (double& s : rgb) {
        s = std::clamp((s - c.black) / (c.white - c.black), 0.0, 1.0);
        s = std::pow(s, 1 / c.gamma);
        s = (s - 0.5) * c.contrast + 0.5 + c.brightness;
    }
    const double y = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
    for (double& s : rgb)
        s = std::clamp(y + (s - y) * c.saturation, 0.0, 1.0);
    return rgb;
}

constexpr ColourControls controlCases[] = {
    {.black = 0.1, .white = 0.7},
    {.gamma = 0.2},
    {.gamma = 5},
    {.contrast = 0},
    {.contrast = 2},
    {.brightness = -0.5},
    {.brightness = 0.5},
    {.saturation = 0},
    {.saturation = 2},
    {.black = 0.05, .white = 0.9, .gamma = 1.3, .contrast = 1.2, .brightness = 0.1, .saturation = 1.4},
    {.contrast = 2, .brightness = 0.5, .saturation = 2},
    {.contrast = 2, .brightness = -0.5, .saturation = 2},
};

TEST(ColourControls, AreAppliedInOrder) {
    for (std::size_t i = 0; i < std::size(controlCases); ++i) {
        for (double red = 0; red <= 1; red += 0.125) {
            for (const double green : {0.0, 0.03, 0.4, 1.0}) {
                for (const double blue : {0.0, 0.5, 0.95}) {
                    const auto expected = literallyAdjusted(controlCases[i], {red, green, blue});
                    const auto actual = adjusted(controlCases[i], {red, green, blue});
                    for (std::size_t channel = 0; channel < 3; ++channel)
                        EXPECT_NEAR(actual[channel], expected[channel], 1e-13) << i;
                }
            }
        }
    }
}

TEST(ColourAdjustment, RoundsTheAdjustedColours) {
    const Bytes before = synthetic::noise(100, 40, 1);
    for (std::size_t c = 0; c < std::size(controlCases); ++c) {
        const ColourAdjustment adjustment(controlCases[c]);
        EXPECT_FALSE(adjustment.isIdentity());
        Bytes after = before;
        adjustment.apply(after);
        for (std::size_t i = 0; i < before.size(); i += 4) {
            const auto expected = literallyAdjusted(
                controlCases[c], {before[i] / 255.0, before[i + 1] / 255.0, before[i + 2] / 255.0});
            for (std::size_t channel = 0; channel < 3; ++channel) {
                EXPECT_NEAR(after[i + channel], expected[channel] * 255, 0.52) << c;
            }
            EXPECT_EQ(after[i + 3], before[i + 3]);
        }
    }
}

TEST(ColourAdjustment, KeepsBytesWithIdentityAndGreysWithSaturation) {
    const Bytes before = synthetic::noise(33, 7, 2);
    Bytes after = before;
    const ColourAdjustment identity{ColourControls()};
    EXPECT_TRUE(identity.isIdentity());
    identity.apply(after);
    EXPECT_EQ(after, before);
    for (const double value : {0.1, 1.0 / 3, 0.7})
        EXPECT_EQ(adjusted({}, {value, 0.9, 0.2}), (std::array{value, 0.9, 0.2}));

    Bytes greys;
    for (int grey = 0; grey < 256; ++grey)
        greys.insert(greys.end(), 4, static_cast<std::uint8_t>(grey));
    Bytes saturated = greys;
    ColourAdjustment({.saturation = 1.7}).apply(saturated);
    EXPECT_EQ(saturated, greys);
}

}  // namespace
}  // namespace zeb
