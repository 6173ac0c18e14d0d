#include "codec/SpriteEncoder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <new>
#include <thread>
#include <utility>
#include <vector>

#include "codec/RLE2.h"
#include "platform/PlatformError.h"
#include "tests/codec/ReferenceCodec.h"
#include "tests/codec/SyntheticPictures.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Draws bytes of its own, which depend on the colour space, after checking that the bitmap is as promised.
class TestPicture : public Picture {
public:
    explicit TestPicture(Bytes sRGB) : m_sRGB(sRGB), m_deviceRGB(std::move(sRGB)) {}
    TestPicture(Bytes sRGB, Bytes deviceRGB) : m_sRGB(std::move(sRGB)), m_deviceRGB(std::move(deviceRGB)) {}

    int width() const override { return 320; }
    int height() const override { return 200; }

    void draw(const BitmapContext& bitmap) const override {
        const Bytes& rgba = bitmap.colourSpace == DrawingColourSpace::sRGB ? m_sRGB : m_deviceRGB;
        EXPECT_EQ(bitmap.pixels.size(),
                  static_cast<std::size_t>(bitmap.width) * static_cast<std::size_t>(bitmap.height) * 4);
        ASSERT_EQ(bitmap.pixels.size(), rgba.size());
        EXPECT_TRUE(std::ranges::all_of(bitmap.pixels, [](std::uint8_t byte) { return byte == 0; }));
        std::ranges::copy(rgba, bitmap.pixels.begin());
    }

private:
    Bytes m_sRGB;
    Bytes m_deviceRGB;
};

/// Fails to draw, by throwing whatever it is told to.
template <typename Error>
class FailingPicture : public Picture {
public:
    explicit FailingPicture(Error error) : m_error(std::move(error)) {}
    int width() const override { return 8; }
    int height() const override { return 8; }
    void draw(const BitmapContext&) const override { throw m_error; }

private:
    Error m_error;
};

Bytes copyOf(std::span<const std::uint8_t> bytes) {
    return {bytes.begin(), bytes.end()};
}

/// The pattern of a Mode 4 record, bit by bit.
Bytes expectedMode4Pattern(const Bytes& indices, std::size_t width, std::size_t height) {
    const std::size_t rowStride = (2 * ((width + 7) / 8) + 3) / 4 * 4;
    Bytes pattern(rowStride * height, 0);
    for (std::size_t y = 0; y < height; ++y) {
        for (std::size_t x = 0; x < width; ++x) {
            const int index = indices[y * width + x];
            std::uint8_t* group = &pattern[y * rowStride + 2 * (x / 8)];
            if ((index & 2) != 0) group[0] = static_cast<std::uint8_t>(group[0] | (0x80 >> (x % 8)));
            if ((index & 1) != 0) group[1] = static_cast<std::uint8_t>(group[1] | (0x80 >> (x % 8)));
        }
    }
    return pattern;
}

TEST(SpriteEncoder, WritesAMode4Record) {
    // Two rows of black, red, green, white and back, as greys of their brightness.
    Bytes rgba;
    for (const int grey : {0, 85, 170, 255, 255, 170, 85, 0, 255, 255, 255, 255, 0, 0, 0, 0}) {
        const auto byte = static_cast<std::uint8_t>(grey);
        rgba.insert(rgba.end(), {byte, byte, byte, 255});
    }
    const Bytes expected{
        1,    0,    0, 0, 0,    8,    0, 2, 0, 0, 0, 0, 0, 0, 0, 20, 0, 0, 0, 0, 0, 0, 0, 0,  // header
        0,    0,    0, 0, 0,    0,    0, 0,                                                   // gap
        0x3C, 0x5A, 0, 0, 0xF0, 0xF0, 0, 0,  // rows, padded to four bytes
    };
    SpriteEncoder encoder;
    EXPECT_EQ(encoder.encodeMode4Sprite(TestPicture(rgba), 8, 2, false), expected);
}

TEST(SpriteEncoder, WritesAMode32Record) {
    Bytes rgba;
    for (int i = 0; i < 3; ++i)
        rgba.insert(rgba.end(), {255, 0, 0, 255});
    rgba.insert(rgba.end(), {0, 0, 255, 255});
    const Bytes expected{
        2,   32,  0,   0x40, 0, 2, 0, 2, 0,    0,    0,    0,    0,    0,
        0,   12,  0,   0,    0, 0, 0, 0, 0,    0,  // header
        'R', 'L', 'E', '2',  0, 0, 0, 8, 0xFE, 0x00, 0xF8, 0x00, 0x1F, 0x00,
    };
    SpriteEncoder encoder;
    EXPECT_EQ(encoder.encodeMode32Sprite(TestPicture(rgba), 2, 2), expected);
}

TEST(SpriteEncoder, Mode4PatternEqualsBitByBit) {
    SpriteEncoder encoder;
    for (const auto& [width, height] :
         {std::pair{8, 1}, {64, 1}, {12, 5}, {15, 9}, {17, 8}, {72, 20}, {257, 3}}) {
        const TestPicture picture(synthetic::noise(width, height, 11));
        for (const bool dither : {false, true}) {
            const Bytes indices = copyOf(encoder.quantizeLuma(picture, width, height, 4, dither));
            const Bytes record = encoder.encodeMode4Sprite(picture, width, height, dither);
            const Bytes pattern = expectedMode4Pattern(indices, static_cast<std::size_t>(width),
                                                       static_cast<std::size_t>(height));
            ASSERT_EQ(record.size(), 32 + pattern.size());
            EXPECT_TRUE(std::equal(pattern.begin(), pattern.end(), record.begin() + 32))
                << width << " x " << height;
            EXPECT_EQ(record[4] * 256 + record[5], width);
            EXPECT_EQ(record[6] * 256 + record[7], height);
        }
    }
}

TEST(SpriteEncoder, Mode32PatternExpandsToThePixels) {
    SpriteEncoder encoder;
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 300}, {300, 1}, {64, 48}, {511, 33}}) {
        for (const Bytes& rgba : {synthetic::natural(width, height, 2), synthetic::noise(width, height, 2)}) {
            const Bytes record = encoder.encodeMode32Sprite(TestPicture(rgba), width, height);
            Bytes pixels(rgba.size() / 2);
            reference::packRGB565(rgba, pixels);
            EXPECT_TRUE(expandRLE2(std::span(record).subspan(24), pixels.size()) == pixels);
        }
    }
    // Uniform frames shrink to a packet of three bytes for 128 pixels.
    const auto uniform = encoder.encodeMode32Sprite(TestPicture(synthetic::flat(100, 30, 1, 2, 3)), 100, 30);
    EXPECT_EQ(uniform.size(), 32U + (100 * 30 + 127) / 128 * 3);
}

TEST(SpriteEncoder, EachModeDrawsInItsColourSpace) {
    const TestPicture picture(synthetic::flat(8, 8, 255, 255, 255), synthetic::flat(8, 8, 0, 0, 0));
    SpriteEncoder encoder;
    EXPECT_EQ(copyOf(encoder.renderRGBA(picture, 8, 8)), synthetic::flat(8, 8, 255, 255, 255));
    EXPECT_EQ(copyOf(encoder.quantizeLuma(picture, 8, 8, 4, false)), Bytes(64, 0));
}

TEST(SpriteEncoder, TakesTheSmallestSides) {
    SpriteEncoder encoder;
    const Bytes mode4 =
        encoder.encodeMode4Sprite(TestPicture(synthetic::flat(8, 1, 255, 255, 255)), 3, 0, true);
    EXPECT_EQ(mode4.size(), 36U);
    EXPECT_EQ(mode4[5], 8);
    EXPECT_EQ(mode4[7], 1);
    EXPECT_EQ(Bytes(mode4.begin() + 32, mode4.end()), (Bytes{0xFF, 0xFF, 0, 0}));

    const TestPicture pixel(synthetic::flat(1, 1, 255, 255, 255));
    const Bytes mode32 = encoder.encodeMode32Sprite(pixel, -5, 0);
    EXPECT_EQ(mode32.size(), 35U);
    EXPECT_EQ(mode32[5], 1);
    EXPECT_EQ(encoder.renderRGBA(pixel, 0, 0).size(), 4U);
    EXPECT_EQ(encoder.packRGB565(encoder.renderRGBA(pixel, 0, 0), 0, 0).size(), 2U);
    EXPECT_EQ(encoder.quantizeLuma(pixel, 0, -1, 4, true).size(), 1U);
}

TEST(SpriteEncoder, RecordsDoNotDependOnEarlierOnes) {
    SpriteEncoder used;
    const TestPicture large(synthetic::noise(200, 100, 1));
    used.encodeMode4Sprite(large, 200, 100, true);
    used.encodeMode32Sprite(large, 200, 100);
    used.quantizeLuma(large, 200, 100, 7, true);
    const TestPicture small(synthetic::natural(48, 21, 1));
    EXPECT_EQ(used.encodeMode4Sprite(small, 48, 21, true),
              SpriteEncoder().encodeMode4Sprite(small, 48, 21, true));
    EXPECT_EQ(used.encodeMode32Sprite(small, 48, 21), SpriteEncoder().encodeMode32Sprite(small, 48, 21));
}

TEST(SpriteEncoder, EncodersOnSeveralThreadsAgree) {
    const TestPicture picture(synthetic::natural(128, 72, 4));
    std::vector<std::pair<Bytes, Bytes>> records(4);
    {
        std::vector<std::jthread> threads;
        for (auto& record : records) {
            threads.emplace_back([&picture, &record] {
                SpriteEncoder encoder;
                for (int i = 0; i < 3; ++i) {
                    record.first = encoder.encodeMode4Sprite(picture, 128, 72, true);
                    record.second = encoder.encodeMode32Sprite(picture, 128, 72);
                }
            });
        }
    }
    EXPECT_THAT(records, testing::Each(records[0]));
}

template <typename Call>
void expectError(Call call, const char* domain, int code) {
    try {
        call();
        ADD_FAILURE() << "no error";
    } catch (const PlatformError& error) {
        EXPECT_EQ(error.domain(), domain);
        EXPECT_EQ(error.code(), code);
    }
}

TEST(SpriteEncoder, ReportsBitmapsThatCannotBeMade) {
    SpriteEncoder encoder;
    const TestPicture picture(synthetic::flat(8, 8, 0, 0, 0));
    constexpr int huge = std::numeric_limits<int>::max();
    expectError([&] { encoder.renderRGBA(picture, huge, huge); }, "ZEBMaker", -2);
    expectError([&] { encoder.quantizeLuma(picture, huge, huge, 4, true); }, "SpriteEncoder", 1);

    const FailingPicture<std::bad_alloc> tooLarge{std::bad_alloc()};
    expectError([&] { encoder.encodeMode32Sprite(tooLarge, 8, 8); }, "ZEBMaker", -2);
    expectError([&] { encoder.encodeMode4Sprite(tooLarge, 8, 8, false); }, "SpriteEncoder", 1);

    // Errors of the drawing itself come through as they are, and the encoder works on.
    const FailingPicture<PlatformError> damaged{PlatformError("Media", 2, "damaged")};
    expectError([&] { encoder.encodeMode32Sprite(damaged, 8, 8); }, "Media", 2);
    expectError([&] { encoder.encodeMode4Sprite(damaged, 8, 8, true); }, "Media", 2);
    EXPECT_EQ(encoder.encodeMode4Sprite(picture, 8, 8, true),
              SpriteEncoder().encodeMode4Sprite(picture, 8, 8, true));
}

}  // namespace
}  // namespace zeb
