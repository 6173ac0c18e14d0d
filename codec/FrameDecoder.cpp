#include "codec/FrameDecoder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "codec/RLE2.h"
#include "codec/SpriteLayout.h"
#include "platform/base/ProcessorVersions.h"

namespace zeb {
namespace {

using Bytes = std::span<const std::uint8_t>;

static_assert(std::endian::native == std::endian::little, "pixels are put together as little-endian words");

constexpr int largestSide = 8192;
constexpr int largestRawSide = 4096;

using sprite::alphaChannel;
using sprite::maskCompressed;
using sprite::patternCompressed;

int read16(Bytes bytes, std::size_t offset) {
    return bytes[offset] << 8 | bytes[offset + 1];
}

std::int32_t read32(Bytes bytes, std::size_t offset) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(read16(bytes, offset)) << 16 |
                                     static_cast<std::uint32_t>(read16(bytes, offset + 2)));
}

// Equal to floor(x * 255 / 31) and floor(x * 255 / 63), in 16-bit arithmetic that vectorises well.
ZEB_ALWAYS_INLINE constexpr std::uint16_t expand5(std::uint16_t value) {
    return static_cast<std::uint16_t>(static_cast<std::uint16_t>(value * 2106) >> 8);
}
ZEB_ALWAYS_INLINE constexpr std::uint16_t expand6(std::uint16_t value) {
    return static_cast<std::uint16_t>(
        static_cast<std::uint32_t>(static_cast<std::uint16_t>(value << 4)) * 16580U >> 16);
}

constexpr std::uint32_t opaquePixel(std::uint32_t red, std::uint32_t green, std::uint32_t blue) {
    return 0xFF000000 | red << 16 | green << 8 | blue;
}

/// The two halves of a pixel: blue and green, red and alpha.
struct PixelHalves {
    std::uint16_t blueGreen, redAlpha;
};

ZEB_ALWAYS_INLINE PixelHalves opaqueHalves(std::uint16_t red, std::uint16_t green, std::uint16_t blue) {
    return {static_cast<std::uint16_t>(blue | green << 8), static_cast<std::uint16_t>(red | 0xFF00)};
}

ZEB_ALWAYS_INLINE PixelHalves rgb565Pixel(std::uint16_t value) {
    return opaqueHalves(expand5(value >> 11), expand6(value >> 5 & 0x3F), expand5(value & 0x1F));
}

ZEB_ALWAYS_INLINE PixelHalves qpcPackedPixel(std::uint16_t value) {
    const auto green = static_cast<std::uint16_t>(value >> 13 << 3 | (value & 7));
    return opaqueHalves(expand5(value >> 3 & 0x1F), expand6(green), expand5(value >> 8 & 0x1F));
}

template <Mode32Interpretation interpretation>
ZEB_ALWAYS_INLINE void convertMode32Row(const std::uint8_t* __restrict bytes, int count,
                                        std::uint8_t* __restrict pixels) {
    constexpr bool isBigEndian = interpretation == Mode32Interpretation::rgb565BE ||
                                 interpretation == Mode32Interpretation::qpcPackedBE;
    constexpr bool isPacked = interpretation == Mode32Interpretation::qpcPackedBE ||
                              interpretation == Mode32Interpretation::qpcPackedLE;
    for (int x = 0; x < count; ++x) {
        std::uint16_t stored;
        std::memcpy(&stored, bytes + 2 * x, sizeof stored);
        const auto value = isBigEndian ? static_cast<std::uint16_t>(stored << 8 | stored >> 8) : stored;
        const PixelHalves pixel = isPacked ? qpcPackedPixel(value) : rgb565Pixel(value);
        std::memcpy(pixels + 4 * x, &pixel.blueGreen, sizeof pixel.blueGreen);
        std::memcpy(pixels + 4 * x + 2, &pixel.redAlpha, sizeof pixel.redAlpha);
    }
}

ZEB_ALWAYS_INLINE void convertMode32(Mode32Interpretation interpretation, const std::uint8_t* bytes,
                                     int count, std::uint8_t* pixels) {
    using enum Mode32Interpretation;
    switch (interpretation) {
        case rgb565BE:
            return convertMode32Row<rgb565BE>(bytes, count, pixels);
        case rgb565LE:
            return convertMode32Row<rgb565LE>(bytes, count, pixels);
        case qpcPackedBE:
            return convertMode32Row<qpcPackedBE>(bytes, count, pixels);
        case qpcPackedLE:
            return convertMode32Row<qpcPackedLE>(bytes, count, pixels);
    }
}

void convertMode32Anywhere(Mode32Interpretation interpretation, const std::uint8_t* bytes, int count,
                           std::uint8_t* pixels) {
    convertMode32(interpretation, bytes, count, pixels);
}

ZEB_FOR_AVX2 void convertMode32AVX2(Mode32Interpretation interpretation, const std::uint8_t* bytes, int count,
                                    std::uint8_t* pixels) {
    convertMode32(interpretation, bytes, count, pixels);
}

/// Decodes a group of eight pixels: a byte of green bits and a byte of red bits, first pixel highest.
void convertMode4Group(std::uint8_t greens, std::uint8_t reds, std::uint8_t* pixels) {
    // The screen shows white where both bits are set.
    constexpr std::array<std::uint32_t, 4> palette = {opaquePixel(0, 0, 0), opaquePixel(255, 0, 0),
                                                      opaquePixel(0, 255, 0), opaquePixel(255, 255, 255)};
    for (int k = 0; k < 8; ++k) {
        const std::uint32_t colour = (greens >> (7 - k) & 1U) << 1 | (reds >> (7 - k) & 1U);
        std::memcpy(pixels + 4 * k, &palette[colour], sizeof palette[colour]);
    }
}

void convertMode4Row(const std::uint8_t* bytes, int count, std::uint8_t* pixels) {
    constexpr int groupPixels = 8, groupBytes = 4 * groupPixels;
    for (; count >= groupPixels; count -= groupPixels, bytes += 2, pixels += groupBytes)
        convertMode4Group(bytes[0], bytes[1], pixels);
    if (count == 0) return;
    std::array<std::uint8_t, groupBytes> last{};
    convertMode4Group(bytes[0], bytes[1], last.data());
    std::copy_n(last.begin(), 4 * count, pixels);
}

void convertMode33Row(const std::uint8_t* bytes, int count, std::uint8_t* pixels) {
    for (int x = 0; x < count; ++x) {
        const auto value = static_cast<std::uint16_t>(bytes[2 * x] << 8 | bytes[2 * x + 1]);
        const std::uint32_t pixel =
            opaquePixel(expand5(value >> 6 & 0x1F), expand5(value >> 11), expand5(value >> 1 & 0x1F));
        std::memcpy(pixels + 4 * x, &pixel, sizeof pixel);
    }
}

void convertMode64Row(const std::uint8_t* bytes, int count, std::uint8_t* pixels) {
    for (int x = 0; x < count; ++x) {
        const std::uint32_t pixel = opaquePixel(bytes[4 * x], bytes[4 * x + 1], bytes[4 * x + 2]);
        std::memcpy(pixels + 4 * x, &pixel, sizeof pixel);
    }
}

/// Returns a picture of this size with uninitialised pixels.
FrameImage makeImage(int width, int height) {
    FrameImage image{width, height, {}};
    image.pixels.resize(std::size_t{4} * static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    return image;
}

bool isRawSide(int side) {
    return side >= 1 && side <= largestRawSide;
}

/// True if `bytes` is the size of the raw pixels of such a picture.
bool isRawSize(std::uint64_t bytes, int width, int height) {
    if (width < 1 || height < 1) return false;
    const std::uint64_t count = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    return bytes == 4 * count || bytes == 2 * count;
}

/// Decodes raw pixels: 32-bit pixels as shown, or 16-bit RGB 5-6-5 pixels, low byte first.
std::optional<FrameImage> decodeRaw(Bytes bytes, int width, int height) {
    if (!isRawSize(bytes.size(), width, height)) return std::nullopt;
    FrameImage image = makeImage(width, height);
    if (bytes.size() == image.pixels.size()) {
        std::copy(bytes.begin(), bytes.end(), image.pixels.begin());
        return image;
    }
    const auto convert = processorHasAVX2() ? convertMode32AVX2 : convertMode32Anywhere;
    for (int y = 0; y < height; ++y) {
        const std::size_t row = static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
        convert(Mode32Interpretation::rgb565LE, bytes.data() + 2 * row, width, image.pixels.data() + 4 * row);
    }
    return image;
}

}  // namespace

/// The fields of the sprite header and values derived from them.
struct FrameDecoder::Sprite {
    int form, colourMode, control, width, height;
    std::int64_t patternOffset, maskOffset;  ///< relative to their fields
    int bytesPerPixel = 0;                   ///< 0 for the bit planes of Mode 4
    std::int64_t rowStride = 0;

    explicit Sprite(Bytes record)
        : form(record[sprite::formAt]),
          colourMode(record[sprite::colourModeAt]),
          control(record[sprite::controlAt]),
          width(read16(record, sprite::widthAt)),
          height(read16(record, sprite::heightAt)),
          patternOffset(read32(record, sprite::patternPointerAt)),
          maskOffset(read32(record, sprite::maskPointerAt)) {}

    bool has(std::uint8_t flag) const { return (control & flag) != 0; }
    bool isMode4() const { return colourMode == 0 && form == 1; }
    std::int64_t patternStart() const { return std::int64_t{sprite::patternPointerAt} + patternOffset; }
    std::int64_t patternBytes() const { return rowStride * height; }

    bool hasSides() const {
        return width >= 1 && width <= largestSide && height >= 1 && height <= largestSide;
    }

    /// False for an unknown colour mode.
    bool findGeometry() {
        if (isMode4()) {
            rowStride = sprite::mode4Row(width);
            return true;
        }
        switch (colourMode) {
            case 32:
            case 33:
                bytesPerPixel = 2;
                break;
            case 64:
                bytesPerPixel = 4;
                break;
            default:
                return false;
        }
        rowStride = sprite::paddedRow(std::int64_t{bytesPerPixel} * width);
        return true;
    }

    /// The mask value of the pixel at column `x`; the mask bytes of its row start at `row`.
    std::uint32_t alphaAt(const std::uint8_t* row, int x) const {
        if (has(alphaChannel)) return row[x];
        if (bytesPerPixel == 0) {
            const std::uint8_t* group = row + (x >> 3 << 1);
            return ((group[0] | group[1]) & 0x80 >> (x & 7)) != 0 ? 255 : 0;
        }
        const std::uint8_t* pixel = row + x * bytesPerPixel;
        return std::any_of(pixel, pixel + bytesPerPixel, [](std::uint8_t byte) { return byte != 0; }) ? 255
                                                                                                      : 0;
    }

    void applyMask(Bytes mask, std::uint8_t* pixels) const {
        const std::int64_t maskStride = has(alphaChannel) ? width : rowStride;
        for (int y = 0; y < height; ++y) {
            const std::uint8_t* row = mask.data() + maskStride * y;
            for (int x = 0; x < width; ++x, pixels += 4) {
                const std::uint32_t alpha = alphaAt(row, x);
                if (alpha == 255) continue;
                pixels[3] = static_cast<std::uint8_t>(alpha);
                for (int c = 0; c < 3; ++c) {
                    pixels[c] = static_cast<std::uint8_t>(std::uint64_t{alpha} * pixels[c] * 32897 >> 23);
                }
            }
        }
    }
};

bool FrameDecoder::canDecode(Bytes start, std::uint64_t size, int width, int height) {
    // Allowance for bytes between the parts of a sprite.
    constexpr std::uint64_t alwaysFits = 64 * 1024;
    if (size <= alwaysFits || isRawSize(size, width, height)) return true;
    if (start.size() < sprite::headerSize) return false;
    const int ownWidth = read16(start, 0), ownHeight = read16(start, 2);
    if (isRawSide(ownWidth) && isRawSide(ownHeight) && isRawSize(size - 8, ownWidth, ownHeight)) return true;
    Sprite sprite(start);
    if (sprite.form == 0 || !sprite.hasSides() || !sprite.findGeometry()) return false;
    // A pattern and a mask. No compression makes either more than twice as long.
    const std::int64_t part = std::max(sprite.patternBytes(), std::int64_t{sprite.width} * sprite.height);
    return size - alwaysFits <= static_cast<std::uint64_t>(4 * part);
}

std::optional<FrameImage> FrameDecoder::decodeFrame(Bytes record, int width, int height) {
    m_line.clear();
    if (std::optional<FrameImage> image = decodeSprite(record)) return image;
    if (record.size() >= 8) {
        const int ownWidth = read16(record, 0), ownHeight = read16(record, 2);
        if (isRawSide(ownWidth) && isRawSide(ownHeight)) {
            if (std::optional<FrameImage> image = decodeRaw(record.subspan(8), ownWidth, ownHeight))
                return image;
        }
    }
    note(" | fallback: common-raw");
    return decodeRaw(record, width, height);
}

std::optional<FrameImage> FrameDecoder::decodeSprite(Bytes record) {
    note("payload=%zuB [", record.size());
    for (std::size_t i = 0; i < std::min<std::size_t>(record.size(), 16); ++i) {
        note(i == 0 ? "%02X" : " %02X", record[i]);
    }
    note("]");
    if (record.size() < sprite::headerSize) {
        note(" | not-sprite: <0x18");
        return std::nullopt;
    }
    Sprite sprite(record);
    if (sprite.colourMode == 32) {
        const std::string_view name = label(mode32Interpretation);
        note(" | mode32=%.*s", static_cast<int>(name.size()), name.data());
    }
    note(" | form=%d cm=%d ctrl=%02X w=%d h=%d cpatRel=%d maskRel=%d", sprite.form, sprite.colourMode,
         static_cast<unsigned>(sprite.control), sprite.width, sprite.height,
         static_cast<int>(sprite.patternOffset), static_cast<int>(sprite.maskOffset));
    if (sprite.form == 0) {
        note(" | system-sprite(0)");
        return std::nullopt;
    }
    if (!sprite.hasSides()) {
        note(" | bad-dims");
        return std::nullopt;
    }
    const std::int64_t patternStart = sprite.patternStart();
    const auto recordSize = static_cast<std::int64_t>(record.size());
    if (patternStart < 0 || patternStart >= recordSize) {
        note(" | bad-cpatStart=%lld", static_cast<long long>(patternStart));
        return std::nullopt;
    }
    const auto text = [&sprite](std::uint8_t flag) { return sprite.has(flag) ? "true" : "false"; };
    note(" | pcmp=%s mcmp=%s alph=%s", text(patternCompressed), text(maskCompressed), text(alphaChannel));
    if (sprite.isMode4()) note(" | ql-mode4");
    if (!sprite.findGeometry()) {
        note(" | unsupported-colourMode");
        return std::nullopt;
    }
    const std::int64_t patternBytes = sprite.patternBytes();
    note(" | bpp=%d rowStride=%lld patBytes=%lld cpatStart=%lld", sprite.bytesPerPixel,
         static_cast<long long>(sprite.rowStride), static_cast<long long>(patternBytes),
         static_cast<long long>(patternStart));

    Bytes pattern = record.subspan(static_cast<std::size_t>(patternStart));
    if (sprite.has(patternCompressed)) {
        noteSignature("RLEsig", pattern);
        if (!expandRLE2(pattern, static_cast<std::size_t>(patternBytes), m_pattern)) {
            note(" | RLE-decode-failed(pattern)");
            return std::nullopt;
        }
        pattern = m_pattern;
    } else if (patternBytes > recordSize - patternStart) {
        note(" | pat-out-of-range");
        return std::nullopt;
    }
    const Bytes mask = findMask(record, sprite);

    FrameImage image = makeImage(sprite.width, sprite.height);
    const auto convert = processorHasAVX2() ? convertMode32AVX2 : convertMode32Anywhere;
    std::uint8_t* pixels = image.pixels.data();
    for (int y = 0; y < sprite.height;
         ++y, pixels += std::size_t{4} * static_cast<std::size_t>(sprite.width)) {
        const std::uint8_t* row = pattern.data() + sprite.rowStride * y;
        switch (sprite.colourMode) {
            case 32:
                convert(mode32Interpretation, row, sprite.width, pixels);
                break;
            case 33:
                convertMode33Row(row, sprite.width, pixels);
                break;
            case 64:
                convertMode64Row(row, sprite.width, pixels);
                break;
            default:
                convertMode4Row(row, sprite.width, pixels);
                break;
        }
    }
    if (!mask.empty()) sprite.applyMask(mask, image.pixels.data());
    note(" | ok");
    return image;
}

/// Returns the mask bytes, exactly as many as the sprite needs; empty without a usable mask.
std::span<const std::uint8_t> FrameDecoder::findMask(Bytes record, const Sprite& sprite) {
    const std::int64_t start = std::int64_t{zeb::sprite::maskPointerAt} + sprite.maskOffset;
    const auto recordSize = static_cast<std::int64_t>(record.size());
    if (sprite.maskOffset == 0 || start < 0 || start >= recordSize) return {};
    const std::int64_t bytes =
        (sprite.has(alphaChannel) ? std::int64_t{sprite.width} : sprite.rowStride) * sprite.height;
    note(" | maskStart=%lld maskBytes=%lld", static_cast<long long>(start), static_cast<long long>(bytes));
    const Bytes rest = record.subspan(static_cast<std::size_t>(start));
    if (sprite.has(maskCompressed)) {
        noteSignature("MRLEsig", rest);
        if (expandRLE2(rest, static_cast<std::size_t>(bytes), m_mask)) return m_mask;
        note(" | RLE-decode-failed(mask)");
        return {};
    }
    if (bytes > recordSize - start) {
        note(" | mask-out-of-range");
        return {};
    }
    return rest.first(static_cast<std::size_t>(bytes));
}

void FrameDecoder::noteSignature(const char* name, Bytes block) {
    if (block.size() < 4) return;
    note(" | %s=%02X%02X%02X%02X", name, block[0], block[1], block[2], block[3]);
}

void FrameDecoder::note(const char* format, ...) {
    std::array<char, 160> text{};
    std::va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
    va_end(arguments);
    m_line.append(text.data(), static_cast<std::size_t>(std::clamp<int>(length, 0, text.size() - 1)));
}

}  // namespace zeb
