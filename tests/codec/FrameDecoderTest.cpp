#include "codec/FrameDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using enum Mode32Interpretation;

/// A sprite record with its pattern behind the header.
Bytes sprite(int form, int colourMode, int control, int width, int height, const Bytes& pattern) {
    Bytes record(24 + pattern.size());
    std::ranges::copy(pattern, record.begin() + 24);
    record[0] = static_cast<std::uint8_t>(form);
    record[1] = static_cast<std::uint8_t>(colourMode);
    record[3] = static_cast<std::uint8_t>(control);
    record[4] = static_cast<std::uint8_t>(width >> 8);
    record[5] = static_cast<std::uint8_t>(width);
    record[6] = static_cast<std::uint8_t>(height >> 8);
    record[7] = static_cast<std::uint8_t>(height);
    record[15] = 12;
    return record;
}

/// The same with a mask behind the pattern.
Bytes masked(Bytes record, const Bytes& mask) {
    record[19] = static_cast<std::uint8_t>(record.size() - 16);
    record.insert(record.end(), mask.begin(), mask.end());
    return record;
}

/// Pixels as blue, green, red, alpha; nothing when decoding fails.
Bytes pixels(FrameDecoder& decoder, const Bytes& record, int width = 8, int height = 1) {
    const std::optional<FrameImage> image = decoder.decodeFrame(record, width, height);
    return image ? Bytes(image->pixels.begin(), image->pixels.end()) : Bytes();
}

Bytes repeated(const Bytes& pixel, int count) {
    Bytes result;
    for (int i = 0; i < count; ++i)
        result.insert(result.end(), pixel.begin(), pixel.end());
    return result;
}

/// All 65 536 values under each interpretation, by the plain formulas.
TEST(FrameDecoder, ConvertsEveryHighColourValueExactly) {
    constexpr int width = 8192, height = 8;
    Bytes stored;
    for (int value = 0; value < width * height; ++value) {
        stored.push_back(static_cast<std::uint8_t>(value));
        stored.push_back(static_cast<std::uint8_t>(value >> 8));
    }
    for (const Mode32Interpretation interpretation : {rgb565LE, rgb565BE, qpcPackedLE, qpcPackedBE}) {
        const bool isPacked = interpretation == qpcPackedLE || interpretation == qpcPackedBE;
        const bool isSwapped = interpretation == rgb565BE || interpretation == qpcPackedBE;
        Bytes expected;
        for (int value = 0; value < width * height; ++value) {
            const int v = isSwapped ? (value << 8 & 0xFF00) | value >> 8 : value;
            const int red = isPacked ? v >> 3 & 31 : v >> 11;
            const int green = isPacked ? (v >> 13) * 8 + (v & 7) : v >> 5 & 63;
            const int blue = isPacked ? v >> 8 & 31 : v & 31;
            for (const int component : {blue * 255 / 31, green * 255 / 63, red * 255 / 31, 255})
                expected.push_back(static_cast<std::uint8_t>(component));
        }
        FrameDecoder decoder;
        decoder.mode32Interpretation = interpretation;
        EXPECT_TRUE(pixels(decoder, sprite(2, 32, 0, width, height, stored)) == expected)
            << label(interpretation);
    }
}

TEST(FrameDecoder, ConvertsTheOtherFormatsAndMasks) {
    FrameDecoder decoder;
    const Bytes green = {0, 255, 0, 255}, red = {0, 0, 255, 255}, white = {255, 255, 255, 255};
    EXPECT_EQ(pixels(decoder, sprite(1, 0, 0, 8, 1, {0xFF, 0x00, 0, 0})), repeated(green, 8));
    EXPECT_EQ(pixels(decoder, sprite(1, 0, 0, 8, 1, {0x00, 0xFF, 0, 0})), repeated(red, 8));
    EXPECT_EQ(pixels(decoder, sprite(1, 0, 0, 8, 1, {0xFF, 0xFF, 0, 0})), repeated(white, 8));
    // Masks go bit by bit in Mode 4, and rows of theirs are as long as the pattern's.
    EXPECT_EQ(pixels(decoder, masked(sprite(1, 0, 0, 2, 2, {0xFF, 0xFF, 0, 0, 0xFF, 0, 0, 0}),
                                     {0x40, 0, 0, 0, 0, 0x80, 0, 0})),
              (Bytes{0, 0, 0, 0, 255, 255, 255, 255, 0, 255, 0, 255, 0, 0, 0, 0}));
    EXPECT_EQ(pixels(decoder, sprite(2, 33, 0, 1, 1, {0xF8, 0x00, 0, 0})), green);
    EXPECT_EQ(pixels(decoder, sprite(2, 64, 0, 1, 1, {1, 2, 3, 9})), (Bytes{3, 2, 1, 255}));
    // A fifth of the light, by an alpha channel; and one pixel of two cut out, by a mask.
    EXPECT_EQ(pixels(decoder, masked(sprite(2, 64, 0x20, 1, 1, {250, 100, 50, 0}), {51})),
              (Bytes{10, 20, 50, 51}));
    EXPECT_EQ(pixels(decoder, masked(sprite(2, 32, 0, 2, 1, {0xFF, 0xFF, 0xFF, 0xFF}), {0, 1, 0, 0})),
              (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
    // Alpha has no padding at the rows' ends; pattern and mask may be compressed.
    EXPECT_EQ(pixels(decoder, masked(sprite(2, 32, 0xE0, 1, 2,
                                            {'R', 'L', 'E', '4', 0, 0, 0, 8, 0xFF, 0xFF, 0xFF, 0, 0}),
                                     {'R', 'L', 'E', '1', 0, 0, 0, 2, 1, 255, 0})),
              (Bytes{255, 255, 255, 255, 0, 0, 0, 0}));
    // A mask that does not fit is left out.
    EXPECT_EQ(pixels(decoder, masked(sprite(2, 64, 0, 1, 1, {1, 2, 3, 0}), {0})), (Bytes{3, 2, 1, 255}));
    EXPECT_NE(decoder.lastDecodeDebug().find(" | mask-out-of-range | ok"), std::string::npos);
}

TEST(FrameDecoder, SaysWhyARecordIsNoPicture) {
    Bytes outside = sprite(2, 32, 0, 1, 1, {0, 0, 0, 0});
    outside[14] = 1;
    const std::pair<Bytes, std::string> cases[] = {
        {Bytes(23), "not-sprite: <0x18"},
        {sprite(0, 32, 0, 1, 1, {}), "system-sprite(0)"},
        {sprite(2, 33, 0, 8193, 1, {}), "bad-dims"},
        {outside, "bad-cpatStart=280"},
        {sprite(2, 7, 0xE0, 1, 1, {0}), "unsupported-colourMode"},
        {sprite(2, 32, 0, 2, 2, {1, 2, 3}), "pat-out-of-range"},
        {sprite(2, 32, 0x40, 8192, 8192, {'R', 'L', 'E', '2', 255, 255, 255, 255, 0x81, 1, 2}),
         "RLE-decode-failed(pattern)"},
    };
    for (const auto& [record, reason] : cases) {
        FrameDecoder decoder;
        EXPECT_TRUE(pixels(decoder, record, 4000, 4000).empty());
        const std::string expected = " | " + reason + " | fallback: common-raw";
        EXPECT_TRUE(decoder.lastDecodeDebug().ends_with(expected)) << decoder.lastDecodeDebug();
    }
}

TEST(FrameDecoder, ShowsRawPixelsWithoutASprite) {
    FrameDecoder decoder;
    const Bytes raw(4 * 7 * 3, 0x11);
    EXPECT_EQ(pixels(decoder, raw, 7, 3), raw);
    EXPECT_EQ(pixels(decoder, Bytes{0x00, 0xF8}, 1, 1), (Bytes{0, 0, 255, 255}));
    // With a size of its own in front, whatever the file says.
    EXPECT_EQ(pixels(decoder, {0, 1, 0, 1, 0, 0, 0, 0, 0xE0, 0x07}, 100, 100), (Bytes{0, 255, 0, 255}));
}

}  // namespace
}  // namespace zeb
