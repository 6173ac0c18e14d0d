#include "codec/SpriteEncoder.h"

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <new>

#include "codec/FrameDecoder.h"
#include "platform/base/Error.h"
#include "tests/codec/SyntheticPictures.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// Draws given bytes, one array per colour space, after checking the size of the bitmap.
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
        std::ranges::copy(rgba, bitmap.pixels.begin());
    }

private:
    Bytes m_sRGB;
    Bytes m_deviceRGB;
};

struct TooLargePicture : TestPicture {
    using TestPicture::TestPicture;
    void draw(const BitmapContext&) const override { throw std::bad_alloc(); }
};

TEST(SpriteEncoder, WritesExactMode4Record) {
    // Two rows of black, red, green and white, forwards and backwards, as greys of the same brightness.
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
    const Bytes indices{0, 1, 2, 3, 3, 2, 1, 0, 3, 3, 3, 3, 0, 0, 0, 0};
    EXPECT_EQ(SpriteEncoder::packMode4Sprite(indices, 8, 2), expected);
}

TEST(SpriteEncoder, WritesExactMode32Record) {
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
    const Bytes pixels{0x00, 0xF8, 0x00, 0xF8, 0x00, 0xF8, 0x1F, 0x00};
    EXPECT_EQ(encoder.packMode32Sprite(pixels, 2, 2), expected);
}

TEST(SpriteEncoder, DecodedMode4RecordsShowQuantizedPictures) {
    SpriteEncoder encoder;
    FrameDecoder decoder;
    for (const auto& [width, height] : {std::pair{8, 1}, {12, 5}, {17, 8}, {72, 20}, {257, 3}}) {
        const TestPicture picture(synthetic::noise(width, height, 11));
        for (const bool dither : {false, true}) {
            Bytes expected;
            for (const std::uint8_t index : encoder.quantizeLuma(picture, width, height, 4, dither)) {
                const bool isGreen = index >= 2, isRed = index % 2 == 1;
                for (const bool isLit : {isGreen && isRed, isGreen, isRed, true})
                    expected.push_back(isLit ? 255 : 0);
            }
            const auto image =
                decoder.decodeFrame(encoder.encodeMode4Sprite(picture, width, height, dither), 0, 0);
            ASSERT_TRUE(image);
            EXPECT_TRUE(std::ranges::equal(image->pixels, expected)) << width << " x " << height;
        }
    }
}

TEST(SpriteEncoder, EachModeSetsColourSpaceAndSides) {
    const TestPicture picture(synthetic::flat(8, 1, 255, 255, 255), synthetic::flat(8, 1, 0, 0, 0));
    const TestPicture pixel(synthetic::flat(1, 1, 255, 255, 255), synthetic::flat(8, 1, 255, 255, 255));
    const TestPicture dot(synthetic::flat(1, 1, 9, 9, 9));
    SpriteEncoder encoder;
    EXPECT_EQ(encoder.renderRGBA(picture, 8, 1)[0], 255);
    EXPECT_EQ(encoder.quantizeLuma(picture, 8, 1, 4, false)[0], 0);
    const Bytes mode4 = encoder.encodeMode4Sprite(pixel, 3, 0, true);
    EXPECT_EQ(Bytes(mode4.begin() + 4, mode4.begin() + 8), (Bytes{0, 8, 0, 1}));
    EXPECT_EQ(Bytes(mode4.begin() + 32, mode4.end()), (Bytes{0xFF, 0xFF, 0, 0}));
    for (const auto& [width, height] : {std::pair{-5, 0}, {0, 1}, {1, -1}}) {
        const Bytes mode32 = encoder.encodeMode32Sprite(pixel, width, height);
        EXPECT_EQ(Bytes(mode32.begin() + 4, mode32.begin() + 8), (Bytes{0, 1, 0, 1}));
        EXPECT_EQ(mode32.size(), 35U);
        EXPECT_EQ(encoder.quantizeLuma(dot, width, height, 4, false).size(), 1U);
    }
    const TestPicture large(synthetic::flat(513, 300, 1, 2, 3));
    const Bytes block = encoder.encodeMode32Sprite(large, 513, 300);
    EXPECT_EQ(Bytes(block.begin() + 4, block.begin() + 8), (Bytes{2, 1, 1, 44}));
    EXPECT_EQ(Bytes(block.begin() + 28, block.begin() + 32), (Bytes{0, 4, 0xB2, 0x58}));  // 307800 bytes
    for (const auto& [width, height] : {std::pair{3, 0}, {0, 3}, {3, 1}, {1, 3}}) {
        const Bytes three = synthetic::flat(3, 1, 255, 255, 255);
        EXPECT_EQ(encoder.packRGB565(three, width, height).size(), 6U);
        EXPECT_EQ(encoder.renderRGBA(TestPicture(three), width, height).size(), 12U);
    }
}

TEST(SpriteEncoder, ReportsBitmapsThatCannotBeMade) {
    SpriteEncoder encoder;
    const TestPicture picture(synthetic::flat(8, 8, 0, 0, 0));
    constexpr int huge = std::numeric_limits<int>::max();
    const TooLargePicture tooLarge{Bytes()};
    const std::pair<const char*, std::function<void()>> cases[] = {
        {"ZEBMaker -2", [&] { encoder.renderRGBA(picture, huge, huge); }},
        {"SpriteEncoder 1", [&] { encoder.quantizeLuma(picture, huge, huge, 4, true); }},
        {"ZEBMaker -2", [&] { encoder.encodeMode32Sprite(tooLarge, 8, 8); }},
        {"SpriteEncoder 1", [&] { encoder.encodeMode4Sprite(tooLarge, 8, 8, false); }},
    };
    for (const auto& [expected, call] : cases) {
        try {
            call();
            ADD_FAILURE() << expected;
        } catch (const PlatformError& error) {
            EXPECT_EQ(error.domain() + " " + std::to_string(error.code()), expected);
        }
    }
}

}  // namespace
}  // namespace zeb
