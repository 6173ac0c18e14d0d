#include "codec/natural/NaturalTable.h"

#include <gtest/gtest.h>

#include <random>

#include "codec/natural/Mix.h"
#include "codec/natural/ReachableMap.h"
#include "codec/natural/ReachableSearch.h"
#include "tests/codec/natural/ReferenceNatural.h"

namespace zeb {
namespace {

std::array<int, 3> thresholds(const NaturalTable& table, std::size_t red, std::size_t green,
                              std::size_t blue) {
    const std::uint64_t node = table.nodes()[natural::nodeIndex(red, green, blue)];
    EXPECT_EQ(node >> 48, 0U);
    return {reference::nodeThreshold(node, 0), reference::nodeThreshold(node, 1),
            reference::nodeThreshold(node, 2)};
}

TEST(NaturalTable, HoldsExactNodesWithDefaults) {
    const NaturalTable table{NaturalParameters()};
    ASSERT_EQ(table.nodes().size(), 35937U);
    using Node = std::array<int, 3>;
    EXPECT_EQ(thresholds(table, 16, 16, 16), (Node{10660, 10660, 10660}));
    EXPECT_EQ(thresholds(table, 8, 8, 8), (Node{14514, 14514, 14514}));
    EXPECT_EQ(thresholds(table, 32, 24, 20), (Node{0, 5662, 7106}));
    EXPECT_EQ(thresholds(table, 4, 4, 4), (Node{16290, 16290, 16290}));

    // FNV-1a over all nodes: compilers and processors must not differ in a single bit.
    std::uint64_t hash = 0xCBF29CE484222325;
    for (const std::uint64_t node : table.nodes())
        for (int shift = 0; shift < 64; shift += 8)
            hash = (hash ^ (node >> shift & 0xFF)) * 0x100000001B3;
    EXPECT_EQ(hash, 0xFF9B0EC16244FC72U);
}

/// Returns the reachable colour for an encoded one by the standard library and the full search.
natural::Colour reachableColour(const natural::ReachableSearch& search, const natural::Colour& encoded) {
    natural::Colour light;
    for (std::size_t i = 0; i < 3; ++i)
        light[i] = encoded[i] <= 0.04045 ? encoded[i] / 12.92 : std::pow((encoded[i] + 0.055) / 1.055, 2.4);
    return natural::colourOf(search.nearest(light));
}

TEST(NaturalTable, FollowsItsFormulas) {
    struct Case {
        const char* name;
        NaturalParameters parameters;
        double tolerance;  ///< in 1/16384; controls need colours between the nodes of the map
        double meanTolerance;
    };
    const Case cases[] = {
        {"defaults", {}, 2, 0.3},
        {"no tone curve", {.tone = 1, .toe = 0, .controls = {}}, 2, 0.3},
        {"strong", {.tone = 3, .toe = 0.25, .controls = {}}, 2, 0.3},
        {"levels", {.controls = {.black = 0.1, .white = 0.8}}, 300, 4},
        {"gamma", {.controls = {.gamma = 1.7}}, 300, 4},
        {"contrast", {.controls = {.contrast = 1.3, .brightness = -0.1}}, 300, 4},
        {"more saturation", {.controls = {.saturation = 1.6}}, 300, 4},
        {"less saturation", {.controls = {.saturation = 0.4}}, 300, 4},
    };
    const natural::ReachableSearch search;
    for (const auto& [name, parameters, tolerance, meanTolerance] : cases) {
        const NaturalTable table(parameters);
        double worst = 0, sum = 0;
        int count = 0;
        for (std::size_t red = 0; red < 33; red += 4) {
            for (std::size_t green = 0; green < 33; green += 4) {
                for (std::size_t blue = 0; blue < 33; blue += 4) {
                    const auto encoded = [](std::size_t i) { return static_cast<double>(i) / 32; };
                    const auto colour = reachableColour(
                        search, adjusted(parameters.controls, {encoded(red), encoded(green), encoded(blue)}));
                    const auto expected = reference::exactThresholds(colour, parameters.tone, parameters.toe);
                    const auto actual = thresholds(table, red, green, blue);
                    for (std::size_t i = 0; i < 3; ++i) {
                        const double apart = std::abs(actual[i] - expected[i]);
                        worst = std::max(worst, apart);
                        sum += apart;
                        ++count;
                    }
                }
            }
        }
        EXPECT_LE(worst, tolerance) << name;
        EXPECT_LE(sum / count, meanTolerance) << name;
    }
}

// The four colours keep their corners, greys get lighter along the axis and have neither red nor green.
TEST(NaturalTable, KeepsCornersAndGreysForAllParameters) {
    for (const double tone : {1.0, 1.6, 3.0}) {
        for (const double toe : {0.0, 0.16, 0.25}) {
            const NaturalTable table({.tone = tone, .toe = toe, .controls = {}});
            using Node = std::array<int, 3>;
            EXPECT_EQ(thresholds(table, 0, 0, 0), (Node{16384, 16384, 16384})) << tone << " " << toe;
            EXPECT_EQ(thresholds(table, 32, 0, 0), (Node{0, 16384, 16384})) << tone << " " << toe;
            EXPECT_EQ(thresholds(table, 0, 32, 0), (Node{0, 0, 16384})) << tone << " " << toe;
            EXPECT_EQ(thresholds(table, 32, 32, 32), (Node{0, 0, 0})) << tone << " " << toe;
            int last = 16384;
            for (std::size_t i = 1; i < 33; ++i) {
                const auto [black, blackRed, blackRedGreen] = thresholds(table, i, i, i);
                EXPECT_LE(black, last);
                EXPECT_EQ(black, blackRed);
                EXPECT_EQ(black, blackRedGreen);
                last = black;
            }
            for (const std::uint64_t node : table.nodes()) {
                ASSERT_LE(reference::nodeThreshold(node, 0), reference::nodeThreshold(node, 1));
                ASSERT_LE(reference::nodeThreshold(node, 1), reference::nodeThreshold(node, 2));
                ASSERT_LE(reference::nodeThreshold(node, 2), 16384);
            }
        }
    }
}

/// The distance of the search, from the definition of OKLab.
double distance(const natural::Colour& left, const natural::Colour& right) {
    const auto lab = [](const natural::Colour& c) {
        const double l = std::cbrt(0.4122214708 * c[0] + 0.5363325363 * c[1] + 0.0514459929 * c[2]);
        const double m = std::cbrt(0.2119034982 * c[0] + 0.6806995451 * c[1] + 0.1073969566 * c[2]);
        const double s = std::cbrt(0.0883024619 * c[0] + 0.2817188376 * c[1] + 0.6299787005 * c[2]);
        return natural::Colour{0.2104542553 * l + 0.7936177850 * m - 0.0040720468 * s,
                               1.9779984951 * l - 2.4285922050 * m + 0.4505937099 * s,
                               0.0259040371 * l + 0.7827717662 * m - 0.8086757660 * s};
    };
    const auto [l, a, b] = lab(left);
    const auto [l2, a2, b2] = lab(right);
    const double chroma = std::pow(std::hypot(a, b) - std::hypot(a2, b2), 2);
    const double hue = std::pow(a - a2, 2) + std::pow(b - b2, 2) - chroma;
    return std::pow(l - l2, 2) + chroma + 1.25 * 1.25 * hue;
}

TEST(ReachableSearch, FindsNoWorseThanManyRandomMixes) {
    std::mt19937 random(1);
    const auto share = [&] { return static_cast<double>(random()) / 4294967296.0; };
    std::vector<natural::Colour> mixes;
    for (int i = 0; i < 20000; ++i) {
        natural::Mix mix = {share(), share(), share(), share()};
        mix[random() % 4] = 0;
        if (i % 2 == 0) mix[0] *= 20;  // dark colours differ more
        mixes.push_back(natural::colourOf(natural::normalised(mix)));
    }
    const natural::ReachableSearch search;
    for (int i = 0; i < 40; ++i) {
        const double scale = i % 2 == 0 ? 1 : 0.1;
        const natural::Colour colour = {share() * scale, share() * scale, share() * scale};
        const natural::Mix found = search.nearest(colour);
        EXPECT_TRUE(natural::isReachable(found));
        if (natural::isReachable(natural::mixOf(colour))) {
            EXPECT_EQ(found, natural::mixOf(colour));
            continue;
        }
        const double apart = distance(colour, natural::colourOf(found));
        for (const natural::Colour& mix : mixes)
            EXPECT_LE(apart, distance(colour, mix) + 1e-6);
    }
}

// A copy of a node's colour in the map is exact to its unit.
TEST(ReachableMap, HoldsTheSearchedColours) {
    const natural::ReachableSearch search;
    int outside = 0;
    for (std::size_t node = 0; node < natural::reachableCorrections.size(); node += 97) {
        const auto light = [&](std::size_t i) {
            return natural::linearLight(static_cast<double>(i % natural::gridNodes) / 32);
        };
        const natural::Colour colour = {light(node / 33 / 33), light(node / 33), light(node)};
        const natural::Colour nearest = natural::colourOf(search.nearest(colour));
        for (std::size_t i = 0; i < 3; ++i)
            EXPECT_NEAR(colour[i] + natural::reachableCorrections[node][i] * natural::correctionUnit,
                        nearest[i], 1e-9);
        outside += !natural::isReachable(natural::mixOf(colour));
    }
    EXPECT_GT(outside, 200);
}

}  // namespace
}  // namespace zeb
