#include "codec/FrameDecoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>
#include <vector>

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using enum Mode32Interpretation;

/// A sprite record whose pattern follows the header.
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

/// A copy of the record with a mask after the pattern.
Bytes masked(Bytes record, const Bytes& mask) {
    for (std::size_t i = 0; i < 4; ++i)
        record[16 + i] = static_cast<std::uint8_t>((record.size() - 16) >> (24 - 8 * i));
    record.insert(record.end(), mask.begin(), mask.end());
    return record;
}

/// Decoded pixels as blue, green, red, alpha. Empty if decoding fails.
Bytes pixels(FrameDecoder& decoder, const Bytes& record, int width = 8, int height = 1) {
    const std::optional<FrameImage> image = decoder.decodeFrame(record, width, height);
    return image ? Bytes(image->pixels.begin(), image->pixels.end()) : Bytes();
}

/// Compares all 65 536 values in each interpretation with the plain formulas.
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

/// Row size of a pattern: padded to a multiple of four bytes.
std::size_t rowBytes(int colourMode, std::size_t width) {
    return ((colourMode == 0 ? (width + 7) / 8 * 2 : width * (colourMode == 64 ? 4 : 2)) + 3) / 4 * 4;
}

/// Blue, green and red of the pixel at column `x` of a row, by the plain formulas.
std::array<int, 3> plainColours(int colourMode, const std::uint8_t* row, std::size_t x) {
    if (colourMode == 0) {
        const bool isGreen = (row[x / 8 * 2] & 0x80 >> x % 8) != 0;
        const bool isRed = (row[x / 8 * 2 + 1] & 0x80 >> x % 8) != 0;
        return {isGreen && isRed ? 255 : 0, isGreen ? 255 : 0, isRed ? 255 : 0};
    }
    if (colourMode == 64) return {row[4 * x + 2], row[4 * x + 1], row[4 * x]};
    const int first = row[2 * x], second = row[2 * x + 1];
    if (colourMode == 32) {
        const int value = second * 256 + first;
        return {(value & 31) * 255 / 31, (value >> 5 & 63) * 255 / 63, (value >> 11) * 255 / 31};
    }
    const int value = first * 256 + second;
    return {(value >> 1 & 31) * 255 / 31, (value >> 11) * 255 / 31, (value >> 6 & 31) * 255 / 31};
}

/// 255 where any of the pixel's bits is set in its row of a mask.
int plainAlpha(int colourMode, const std::uint8_t* row, std::size_t x) {
    if (colourMode == 0) return ((row[x / 8 * 2] | row[x / 8 * 2 + 1]) & 0x80 >> x % 8) != 0 ? 255 : 0;
    const std::size_t size = colourMode == 64 ? 4 : 2;
    return std::any_of(row + size * x, row + size * (x + 1), [](int byte) { return byte != 0; }) ? 255 : 0;
}

/// The bytes as a compressed block of literal packets only.
Bytes packed(const Bytes& bytes) {
    Bytes block{'R', 'L', 'E', '1', 0, 0, 0, 0};
    for (const std::uint8_t byte : bytes)
        block.insert(block.end(), {0, byte});
    return block;
}

TEST(FrameDecoder, MatchesReferenceForFormatsMasksAndShapes) {
    constexpr int noMask = 0, bitMask = 1, alphaMask = 2;
    std::mt19937 random(5);
    FrameDecoder decoder;
    for (const int colourMode : {0, 32, 33, 64})
        for (const int mask : {noMask, bitMask, alphaMask})
            for (const int compression : {0, 0x40, 0x80, 0xC0})
                for (const auto& [width, height] :
                     {std::pair{1, 1}, {2, 3}, {7, 2}, {8, 1}, {9, 2}, {17, 4}, {300, 30}, {3, 300}}) {
                    const auto columns = static_cast<std::size_t>(width);
                    const std::size_t stride = rowBytes(colourMode, columns);
                    const std::size_t maskStride = mask == alphaMask ? columns : stride;
                    Bytes pattern(stride * static_cast<std::size_t>(height));
                    std::ranges::generate(pattern, [&] { return static_cast<std::uint8_t>(random()); });
                    Bytes alphas(maskStride * static_cast<std::size_t>(height));
                    std::ranges::generate(
                        alphas, [&] { return static_cast<std::uint8_t>(random() % 2 == 0 ? 0 : random()); });
                    Bytes expected;
                    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y)
                        for (std::size_t x = 0; x < columns; ++x) {
                            const std::uint8_t* row = alphas.data() + y * maskStride;
                            const int alpha = mask == noMask      ? 255
                                              : mask == alphaMask ? row[x]
                                                                  : plainAlpha(colourMode, row, x);
                            for (const int colour : plainColours(colourMode, &pattern[y * stride], x))
                                expected.push_back(static_cast<std::uint8_t>(colour * alpha / 255));
                            expected.push_back(static_cast<std::uint8_t>(alpha));
                        }
                    const bool packsPattern = (compression & 0x40) != 0,
                               packsMask = (compression & 0x80) != 0;
                    Bytes record = sprite(colourMode == 0 ? 1 : 2, colourMode,
                                          compression | (mask == alphaMask ? 0x20 : 0), width, height,
                                          packsPattern ? packed(pattern) : pattern);
                    if (mask != noMask) record = masked(record, packsMask ? packed(alphas) : alphas);
                    EXPECT_TRUE(pixels(decoder, record) == expected)
                        << colourMode << ", mask " << mask << ", " << compression << ", " << width << " x "
                        << height;
                }
}

/// A record of one pixel in Mode 32. `patternAt` and `maskAt` are offsets in the record.
Bytes pointing(std::int64_t patternAt, std::int64_t maskAt, std::size_t size) {
    Bytes record = sprite(2, 32, 0, 1, 1, Bytes(size - 24, 0xFF));
    for (const auto& [field, target] : {std::pair{std::size_t{12}, patternAt}, {std::size_t{16}, maskAt}})
        for (std::size_t i = 0; i < 4; ++i) {
            record[field + i] =
                static_cast<std::uint8_t>((target - static_cast<std::int64_t>(field)) >> (24 - 8 * i));
        }
    return record;
}

TEST(FrameDecoder, LimitsPointersByRecordSize) {
    constexpr std::int64_t size = 0x1020300, noMask = 16;
    Bytes record = pointing(size - 4, noMask, size);
    record[size - 4] = 0x1F;
    record[size - 3] = 0;
    FrameDecoder decoder;
    EXPECT_EQ(pixels(decoder, record), (Bytes{255, 0, 0, 255}));
    for (const std::int64_t patternAt : {-1, 25, 27, 28, 65536}) {
        EXPECT_TRUE(pixels(decoder, pointing(patternAt, noMask, 28)).empty()) << patternAt;
        const bool isOutside = patternAt < 0 || patternAt >= 28;
        EXPECT_NE(decoder.lastDecodeDebug().find(isOutside ? "bad-cpatStart=" + std::to_string(patternAt)
                                                           : " | pat-out-of-range"),
                  std::string::npos)
            << decoder.lastDecodeDebug();
    }
    EXPECT_EQ(pixels(decoder, pointing(24, noMask, 28)), (Bytes{255, 255, 255, 255}));
    EXPECT_EQ(pixels(decoder, pointing(0, noMask, 28)), (Bytes{16, 0, 32, 255}));  // header bytes 2, 32
    // A mask outside the record is ignored. A mask of header bytes that are 0 hides the pixel.
    for (const auto& [maskAt, note] : {std::pair{-1, ""},
                                       {0, " | maskStart=0 maskBytes=4"},
                                       {8, " | maskStart=8 maskBytes=4"},
                                       {24, " | maskStart=24 maskBytes=4"},
                                       {25, " | maskStart=25 maskBytes=4 | mask-out-of-range"},
                                       {27, " | maskStart=27 maskBytes=4 | mask-out-of-range"},
                                       {28, ""}}) {
        EXPECT_EQ(pixels(decoder, pointing(24, maskAt, 28))[3], maskAt == 8 ? 0 : 255) << maskAt;
        EXPECT_TRUE(
            decoder.lastDecodeDebug().ends_with(" patBytes=4 cpatStart=24" + std::string(note) + " | ok"))
            << decoder.lastDecodeDebug();
    }
}

TEST(FrameDecoder, RecognisesOversizedRecordsByTheirStart) {
    constexpr std::uint64_t always = 64 * 1024, gigabytes = 3'900'000'000;
    const Bytes small = sprite(2, 32, 0x40, 16, 8, {}), mode4 = sprite(1, 0, 0, 16, 8, {});
    const Bytes largest = sprite(2, 64, 0xC0, 8192, 8192, {});
    Bytes sized{1, 0, 1, 0};
    sized.resize(24);
    const struct {
        Bytes start;
        std::uint64_t size;
        int width, height;
        bool expected;
    } cases[] = {
        {small, always, 1, 1, true},
        {small, always + 4 * 256, 1, 1, true},
        {small, always + 4 * 256 + 1, 1, 1, false},
        {mode4, always + 4 * 128, 1, 1, true},
        {mode4, always + 4 * 128 + 1, 1, 1, false},
        {largest, 600'000'000, 1, 1, true},
        {largest, gigabytes, 1, 1, false},
        {sprite(0, 32, 0, 8192, 8192, {}), always + 1, 1, 1, false},
        {sprite(2, 32, 0, 8193, 8192, {}), always + 1, 1, 1, false},
        {sprite(2, 31, 0, 8192, 8192, {}), always + 1, 1, 1, false},
        {Bytes(24), gigabytes, 1, 1, false},
        // Raw pixels without a sprite header, of the movie's size or with their size in front.
        {Bytes(24), 4 * 300 * 200, 300, 200, true},
        {Bytes(24), 2 * 300 * 200, 300, 200, true},
        {Bytes(24), 2 * 300 * 200 + 1, 300, 200, false},
        {sized, 8 + 4 * 256 * 256, 1, 1, true},
        {sized, 9 + 4 * 256 * 256, 1, 1, false},
    };
    for (const auto& [start, size, width, height, expected] : cases)
        EXPECT_EQ(FrameDecoder::canDecode(start, size, width, height), expected) << size;
}

TEST(FrameDecoder, ReportsWhyRecordIsNoPicture) {
    const Bytes hopeless{'R', 'L', 'E', '2', 255, 255, 255, 255, 0x81, 1, 2};
    const std::pair<Bytes, std::string> cases[] = {
        {Bytes(23), " | not-sprite: <0x18"},
        {sprite(0, 32, 0, 1, 1, {}),
         " | mode32=RGB565 (LE) | form=0 cm=32 ctrl=00 w=1 h=1 cpatRel=12 maskRel=0"
         " | system-sprite(0)"},
        {sprite(2, 33, 0, 8193, 1, {}), " | bad-dims"},
        {sprite(2, 33, 0, 1, 8193, {}), " | bad-dims"},
        {sprite(2, 33, 0, 0, 1, {}), " | bad-dims"},
        {sprite(2, 33, 0, 1, 0, {}), " | bad-dims"},
        {sprite(2, 7, 0xE0, 1, 1, {0}), " | pcmp=true mcmp=true alph=true | unsupported-colourMode"},
        {sprite(2, 0, 0x40, 1, 1, {0}), " | pcmp=true mcmp=false alph=false | unsupported-colourMode"},
        {sprite(1, 0, 0, 1, 1, {0}),
         " | ql-mode4 | bpp=0 rowStride=4 patBytes=4 cpatStart=24 | pat-out-of-range"},
        {sprite(2, 32, 0, 2, 2, {1, 2, 3, 4, 5, 6, 7}), " | pat-out-of-range"},
        {sprite(2, 32, 0x40, 8192, 8192, hopeless), " | RLEsig=524C4532 | RLE-decode-failed(pattern)"},
        {sprite(2, 32, 0x40, 1, 1, {'R', 'L', 'E'}), " cpatStart=24 | RLE-decode-failed(pattern)"},
        {sprite(2, 32, 0x40, 1, 1, {'R', 'L', 'E', '9'}), " | RLEsig=524C4539 | RLE-decode-failed(pattern)"},
    };
    FrameDecoder decoder;
    for (const auto& [record, reason] : cases) {
        EXPECT_TRUE(pixels(decoder, record, 4000, 4000).empty());
        EXPECT_TRUE(decoder.lastDecodeDebug().ends_with(reason + " | fallback: common-raw"))
            << decoder.lastDecodeDebug();
    }
    // Complete lines: the first 16 bytes of the record, and a mask that cannot be expanded.
    pixels(decoder, {1, 0xAB});
    EXPECT_EQ(decoder.lastDecodeDebug(), "payload=2B [01 AB] | not-sprite: <0x18 | fallback: common-raw");
    pixels(decoder, masked(sprite(3, 64, 0x80, 1, 1, {1, 2, 3, 4}), {'R', 'L', 'E', '7', 9}));
    EXPECT_EQ(decoder.lastDecodeDebug(),
              "payload=33B [03 40 00 80 00 01 00 01 00 00 00 00 00 00 00 0C] | form=3 cm=64 ctrl=80 w=1 h=1 "
              "cpatRel=12 maskRel=12 | pcmp=false mcmp=true alph=false | bpp=4 rowStride=4 patBytes=4 "
              "cpatStart=24 | maskStart=28 maskBytes=4 | MRLEsig=524C4537 | RLE-decode-failed(mask) | ok");
}

TEST(FrameDecoder, DecodesRawPixelsWithoutSprite) {
    FrameDecoder decoder;
    const Bytes raw(4 * 7 * 3, 0x11), blueRedGreen{0x1F, 0, 0, 0xF8, 0xE0, 0x07};
    const Bytes shown{255, 0, 0, 255, 0, 0, 255, 255, 0, 255, 0, 255};
    EXPECT_EQ(pixels(decoder, raw, 7, 3), raw);
    for (const auto& [width, height] : {std::pair{3, 1}, {1, 3}})
        EXPECT_EQ(pixels(decoder, blueRedGreen, width, height), shown);
    for (const auto& [width, height] : {std::pair{3, 0}, {0, 3}, {-3, -1}, {2, 1}, {2, 2}})
        EXPECT_TRUE(pixels(decoder, blueRedGreen, width, height).empty());
    EXPECT_TRUE(pixels(decoder, {}, 0, 0).empty());
    // A size in front of the pixels overrides the size of the movie.
    const auto sized = [](int width, int height, const Bytes& rest) {
        const Bytes header = sprite(0, 0, 0, width, height, {});
        Bytes record(header.begin() + 4, header.begin() + 8);
        record.resize(8);
        record.insert(record.end(), rest.begin(), rest.end());
        return record;
    };
    EXPECT_EQ(pixels(decoder, sized(3, 1, blueRedGreen), 100, 100), shown);
    EXPECT_EQ(pixels(decoder, sized(1, 3, blueRedGreen), 100, 100), shown);
    for (const int side : {4096, 4097}) {
        const Bytes line(static_cast<std::size_t>(2 * side));
        EXPECT_EQ(pixels(decoder, sized(side, 1, line), 100, 100).empty(), side > 4096);
        EXPECT_EQ(pixels(decoder, sized(1, side, line), 100, 100).empty(), side > 4096);
    }
    // If that size does not match the number of bytes, the size of the movie is used.
    EXPECT_EQ(pixels(decoder, sized(2, 1, {0, 0}), 5, 1).size(), 20U);
}

}  // namespace
}  // namespace zeb
