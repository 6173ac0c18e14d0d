#include "codec/SpriteEncoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstddef>
#include <cstring>
#include <new>
#include <stdexcept>
#include <string>

#include "codec/RLE2.h"
#include "codec/SpriteLayout.h"
#include "platform/base/Error.h"

namespace zeb {

namespace {

constexpr int mode4Colours = 4;

/// The fields of a sprite header that differ between records; the others are 0.
struct SpriteHeader {
    std::uint8_t form;
    std::uint8_t colourMode;
    std::uint8_t control;
    int width;
    int height;
    std::size_t patternAt;  ///< offset of the pattern in the record
};

/// Writes the header to the start of `record`, whose bytes are 0.
void storeHeader(const SpriteHeader& header, std::vector<std::uint8_t>& record) {
    assert(header.width <= 0xFFFF && header.height <= 0xFFFF);
    record[sprite::formAt] = header.form;
    record[sprite::colourModeAt] = header.colourMode;
    record[sprite::controlAt] = header.control;
    record[sprite::widthAt] = static_cast<std::uint8_t>(header.width >> 8);
    record[sprite::widthAt + 1] = static_cast<std::uint8_t>(header.width);
    record[sprite::heightAt] = static_cast<std::uint8_t>(header.height >> 8);
    record[sprite::heightAt + 1] = static_cast<std::uint8_t>(header.height);
    record[sprite::patternPointerAt + 3] =
        static_cast<std::uint8_t>(header.patternAt - sprite::patternPointerAt);
}

std::size_t pixelCount(int width, int height) {
    return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

/// The error for a bitmap that cannot be allocated.
PlatformError bitmapError(DrawingColourSpace colourSpace) {
    const bool mode32 = colourSpace == DrawingColourSpace::sRGB;
    const std::string domain = mode32 ? "ZEBMaker" : "SpriteEncoder";
    const int code = mode32 ? -2 : 1;
    return {domain,
            code,
            "The operation couldn’t be completed. (" + domain + " error " + std::to_string(code) + ".)",
            {"error_bitmap"}};
}

/// Collects the lowest bits of eight bytes in one byte, the first byte's bit highest.
std::uint8_t gatherBits(std::uint64_t bytes) {
    // Each bit of the factor moves the bit of one byte to the top byte, all to different places.
    constexpr std::uint64_t gather = 0x8040201008040201;
    return static_cast<std::uint8_t>(((bytes & 0x0101010101010101) * gather) >> 56);
}

/// Eight indices in one word, the first one lowest.
std::uint64_t loadIndices(const std::uint8_t* indices) {
    std::uint64_t eight;
    std::memcpy(&eight, indices, sizeof eight);
    if constexpr (std::endian::native == std::endian::big) eight = __builtin_bswap64(eight);
    return eight;
}

}  // namespace

void SpriteEncoder::draw(const Picture& picture, int width, int height, DrawingColourSpace colourSpace) {
    try {
        m_rgba.resize(pixelCount(width, height) * 4);
        picture.draw({.pixels = m_rgba, .width = width, .height = height, .colourSpace = colourSpace});
    } catch (const std::bad_alloc&) {
        throw bitmapError(colourSpace);
    } catch (const std::length_error&) {
        throw bitmapError(colourSpace);
    }
}

std::span<const std::uint8_t> SpriteEncoder::renderRGBA(const Picture& picture, int width, int height) {
    draw(picture, std::max(width, 1), std::max(height, 1), DrawingColourSpace::sRGB);
    return m_rgba;
}

std::span<const std::uint8_t> SpriteEncoder::packRGB565(std::span<const std::uint8_t> rgba, int width,
                                                        int height) {
    const std::size_t count = pixelCount(std::max(width, 1), std::max(height, 1));
    assert(rgba.size() == count * 4);
    m_pixels.resize(count * 2);
    zeb::packRGB565(rgba, m_pixels);
    return m_pixels;
}

std::span<const std::uint8_t> SpriteEncoder::quantizeLuma(const Picture& picture, int width, int height,
                                                          int colours, bool dither) {
    const int columns = std::max(width, 1);
    const int rows = std::max(height, 1);
    draw(picture, columns, rows, DrawingColourSpace::deviceRGB);
    if (colours != m_quantiser.colours()) m_quantiser = LuminanceQuantiser(colours);
    m_indices.resize(pixelCount(columns, rows));
    if (dither) {
        m_quantiser.dither(m_rgba, columns, rows, m_indices);
    } else {
        m_quantiser.quantise(m_rgba, m_indices);
    }
    return m_indices;
}

std::vector<std::uint8_t> SpriteEncoder::encodeMode4Sprite(const Picture& picture, int width, int height,
                                                           bool dither) {
    const int columns = std::max(width, sprite::smallestMode4Width);
    const int rows = std::max(height, 1);
    return packMode4Sprite(quantizeLuma(picture, columns, rows, mode4Colours, dither), columns, rows);
}

std::vector<std::uint8_t> SpriteEncoder::packMode4Sprite(std::span<const std::uint8_t> indices, int width,
                                                         int height) {
    assert(width >= sprite::smallestMode4Width && height >= 1 && indices.size() == pixelCount(width, height));
    const auto rowPixels = static_cast<std::size_t>(width);
    const std::size_t wholeGroups = rowPixels / 8;
    const std::size_t rest = rowPixels % 8;
    const auto rowStride = static_cast<std::size_t>(sprite::mode4Row(width));
    std::vector<std::uint8_t> record(sprite::mode4RecordBytes(width, height));
    storeHeader({.form = 1,
                 .colourMode = 0,
                 .control = 0,
                 .width = width,
                 .height = height,
                 .patternAt = sprite::mode4PatternAt},
                record);

    for (std::size_t y = 0; y < static_cast<std::size_t>(height); ++y) {
        const std::uint8_t* from = indices.data() + y * rowPixels;
        std::uint8_t* to = record.data() + sprite::mode4PatternAt + y * rowStride;
        const auto storeGroup = [&to](const std::uint8_t* group) {
            const std::uint64_t eight = loadIndices(group);
            *to++ = gatherBits(eight >> 1);
            *to++ = gatherBits(eight);
        };
        for (std::size_t group = 0; group < wholeGroups; ++group)
            storeGroup(from + 8 * group);
        if (rest > 0) {
            std::array<std::uint8_t, 8> last{};
            std::copy_n(from + 8 * wholeGroups, rest, last.begin());
            storeGroup(last.data());
        }
    }
    return record;
}

std::vector<std::uint8_t> SpriteEncoder::encodeMode32Sprite(const Picture& picture, int width, int height) {
    const int columns = std::max(width, 1);
    const int rows = std::max(height, 1);
    return packMode32Sprite(packRGB565(renderRGBA(picture, columns, rows), columns, rows), columns, rows);
}

std::vector<std::uint8_t> SpriteEncoder::packMode32Sprite(std::span<const std::uint8_t> pixels, int width,
                                                          int height) {
    assert(width >= 1 && height >= 1 && pixels.size() == pixelCount(width, height) * 2);
    // Compress into a kept buffer first, so that the record is allocated once at its final size.
    m_packets.clear();
    compressRLE2(pixels, m_packets);

    constexpr std::size_t blockHeaderBytes = 8;
    std::vector<std::uint8_t> record;
    record.reserve(sprite::headerSize + blockHeaderBytes + m_packets.size());
    record.resize(sprite::headerSize);
    storeHeader({.form = 2,
                 .colourMode = 32,
                 .control = sprite::patternCompressed,
                 .width = width,
                 .height = height,
                 .patternAt = sprite::headerSize},
                record);
    const std::uint64_t length = pixels.size();
    assert(length <= 0xFFFFFFFF);
    for (const char letter : {'R', 'L', 'E', '2'})
        record.push_back(static_cast<std::uint8_t>(letter));
    for (const int shift : {24, 16, 8, 0})
        record.push_back(static_cast<std::uint8_t>(length >> shift));
    record.insert(record.end(), m_packets.begin(), m_packets.end());
    return record;
}

}  // namespace zeb
