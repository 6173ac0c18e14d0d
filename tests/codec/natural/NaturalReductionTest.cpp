#include "codec/natural/NaturalReduction.h"

#include <gtest/gtest.h>

#include "tests/codec/SyntheticPictures.h"
#include "tests/codec/natural/ReferenceNatural.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
constexpr std::array bothDitherings = {NaturalDithering::ordered, NaturalDithering::fine};

std::shared_ptr<const NaturalTable> defaultTable() {
    static const auto table = std::make_shared<const NaturalTable>(NaturalParameters());
    return table;
}

Bytes reduced(NaturalReduction& reduction, const Bytes& rgba, int width, int height) {
    Bytes indices(rgba.size() / 4, 0xEE);
    reduction.reduce(rgba, width, height, indices);
    return indices;
}

Bytes reduced(NaturalDithering dithering, const Bytes& rgba, int width, int height, int sharpness = 100) {
    NaturalReduction reduction(defaultTable(), dithering, sharpness);
    return reduced(reduction, rgba, width, height);
}

std::array<int, 4> counts(const Bytes& indices) {
    std::array<int, 4> result{};
    for (const std::uint8_t index : indices)
        ++result.at(index);
    return result;
}

// Colours near each other on the scale, so that sharpening, all corners of the cells and exchanges matter.
TEST(NaturalReduction, MatchesLiteralLoops) {
    struct Case {
        int width;
        int height;
        int sharpness;
        int strength;  ///< of `ordered`; twice as much for `fine`
    };
    const Case cases[] = {{1, 1, 100, 256}, {7, 3, 100, 256},   {3, 7, 200, 512},    {2, 90, 100, 256},
                          {513, 5, 0, 0},   {64, 64, 50, 128},  {65, 66, 100, 256},  {130, 9, 25, 64},
                          {8, 1, 100, 256}, {1, 100, 100, 256}, {256, 144, 100, 256}};
    for (const auto& [width, height, sharpness, strength] : cases) {
        Bytes soft = synthetic::noise(width, height, 3);
        for (std::size_t i = 0; i < soft.size(); ++i)
            soft[i] = static_cast<std::uint8_t>(60 + 40 * (i % 4) + soft[i] % 60);
        for (const Bytes& rgba :
             {soft, synthetic::noise(width, height, 1), synthetic::natural(width, height, 2)}) {
            for (const NaturalDithering dithering : bothDitherings) {
                const bool isFine = dithering == NaturalDithering::fine;
                ASSERT_TRUE(reduced(dithering, rgba, width, height, sharpness) ==
                            reference::reduceNaturally(*defaultTable(), isFine,
                                                       isFine ? 2 * strength : strength, rgba, width, height))
                    << width << " x " << height << ", " << sharpness << (isFine ? " %, fine" : " %");
            }
        }
    }
}

TEST(NaturalReduction, KeepsThePureColours) {
    const std::array<std::array<std::uint8_t, 3>, 4> pure = {
        {{0, 0, 0}, {255, 0, 0}, {0, 255, 0}, {255, 255, 255}}};
    for (const double tone : {1.0, 1.6, 3.0}) {
        const auto table = std::make_shared<const NaturalTable>(
            NaturalParameters{.tone = tone, .toe = 0.25, .controls = {}});
        for (const NaturalDithering dithering : bothDitherings) {
            NaturalReduction reduction(table, dithering, 200);
            for (std::size_t i = 0; i < pure.size(); ++i) {
                const auto [red, green, blue] = pure[i];
                EXPECT_TRUE(reduced(reduction, synthetic::flat(70, 66, red, green, blue), 70, 66) ==
                            Bytes(70 * 66, static_cast<std::uint8_t>(i)))
                    << i;
            }
            // Squares of black and white, where the sharpening overshoots.
            Bytes areas, expected;
            for (int p = 0; p < 40 * 40; ++p) {
                const bool isWhite = (p / 40 / 20 + p % 40 / 20) % 2 == 1;
                areas.insert(areas.end(), 4, isWhite ? std::uint8_t{255} : std::uint8_t{0});
                expected.push_back(isWhite ? 3 : 0);
            }
            EXPECT_TRUE(reduced(reduction, areas, 40, 40) == expected);
        }
    }
}

// At 200 % the mask has the sharpening of the exchange at 100 %.
TEST(NaturalReduction, ExchangesKeepTheCountOfEachColour) {
    for (const Bytes& rgba : {synthetic::natural(200, 120, 4), synthetic::noise(200, 120, 4)}) {
        const Bytes before = reduced(NaturalDithering::ordered, rgba, 200, 120, 200);
        const Bytes after = reduced(NaturalDithering::fine, rgba, 200, 120, 100);
        EXPECT_EQ(counts(before), counts(after));
        EXPECT_FALSE(before == after);
    }
}

TEST(NaturalReduction, DoesNotDependOnEarlierPictures) {
    for (const NaturalDithering dithering : bothDitherings) {
        NaturalReduction reduction(defaultTable(), dithering, 100);
        const Bytes picture = synthetic::natural(90, 50, 1);
        const Bytes first = reduced(reduction, picture, 90, 50);
        reduced(reduction, synthetic::noise(200, 130, 2), 200, 130);
        EXPECT_TRUE(reduced(reduction, picture, 90, 50) == first);
        reduced(reduction, synthetic::noise(3, 2, 2), 3, 2);
        EXPECT_TRUE(reduced(reduction, picture, 90, 50) == first);
    }
}

TEST(NaturalReduction, ChangesOfOnePixelStayWithinFourPixels) {
    Bytes rgba = synthetic::natural(64, 40, 3);
    const Bytes before = reduced(NaturalDithering::ordered, rgba, 64, 40);
    std::fill_n(rgba.begin() + (20 * 64 + 30) * 4, 3, std::uint8_t{255});
    const Bytes after = reduced(NaturalDithering::ordered, rgba, 64, 40);
    int changes = 0;
    for (int y = 0; y < 40; ++y) {
        for (int x = 0; x < 64; ++x) {
            const auto i = static_cast<std::size_t>(y * 64 + x);
            if (before[i] == after[i]) continue;
            ++changes;
            EXPECT_LE(std::max(std::abs(x - 30), std::abs(y - 20)), 4) << x << ", " << y;
        }
    }
    EXPECT_GT(changes, 0);
}

TEST(NaturalReduction, GreyRampsRise) {
    for (const NaturalDithering dithering : bothDitherings) {
        Bytes rgba;
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 256; ++x)
                for (int i = 0; i < 4; ++i)
                    rgba.push_back(static_cast<std::uint8_t>(x));
        const Bytes indices = reduced(dithering, rgba, 256, 64);
        int last = 0;
        for (std::size_t column = 0; column < 256; column += 16) {
            int white = 0;
            for (std::size_t y = 0; y < 64; ++y) {
                for (std::size_t x = column; x < column + 16; ++x) {
                    const int index = indices[y * 256 + x];
                    ASSERT_TRUE(index == 0 || index == 3);  // no colour in greys
                    white += index == 3;
                }
            }
            EXPECT_GE(white, column < 64 ? last : last + 1) << column;
            last = white;
        }
        EXPECT_GT(last, 800);  // of 1024
    }
}

}  // namespace
}  // namespace zeb
