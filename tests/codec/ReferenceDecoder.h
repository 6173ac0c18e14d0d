#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>

#include "codec/FrameDecoder.h"
#include "tests/codec/ReferenceCodec.h"

/// Frame decoding pixel by pixel, with a branch for every case: slow, easy to check by eye.
namespace zeb::reference {

class Decoder {
public:
    Decoder(std::span<const std::uint8_t> record, Mode32Interpretation interpretation)
        : m_record(record), m_interpretation(interpretation) {}

    std::optional<FrameImage> decodeFrame(int width, int height) const {
        if (auto image = decodeSprite()) return image;
        if (m_record.size() >= 8) {
            const int w = number(0, 2), h = number(2, 2);
            if (w >= 1 && w <= 4096 && h >= 1 && h <= 4096) {
                if (auto image = decodeRaw(m_record.subspan(8), w, h)) return image;
            }
        }
        return decodeRaw(m_record, width, height);
    }

private:
    using Pixel = std::array<unsigned, 4>;  ///< red, green, blue, alpha

    int number(std::size_t offset, std::size_t bytes) const {
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < bytes; ++i)
            value = value << 8 | m_record[offset + i];
        return static_cast<int>(value);
    }

    static void append(FrameImage& image, const Pixel& pixel) {
        for (const std::size_t channel : {2U, 1U, 0U, 3U})
            image.pixels.push_back(static_cast<std::uint8_t>(pixel[channel]));
    }

    static Pixel rgb565(unsigned v) {
        return {(v >> 11) * 255 / 31, (v >> 5 & 63) * 255 / 63, (v & 31) * 255 / 31, 255};
    }

    static std::optional<FrameImage> decodeRaw(std::span<const std::uint8_t> bytes, int width, int height) {
        if (width < 1 || height < 1) return std::nullopt;
        const std::uint64_t count = static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
        FrameImage image{width, height, {}};
        if (bytes.size() == 4 * count) {
            image.pixels.assign(bytes.begin(), bytes.end());
        } else if (bytes.size() == 2 * count) {
            for (std::size_t o = 0; o < bytes.size(); o += 2)
                append(image, rgb565(static_cast<unsigned>(bytes[o + 1] << 8 | bytes[o])));
        } else {
            return std::nullopt;
        }
        return image;
    }

    /// The `size` bytes of a part of the record, expanded where they are compressed.
    std::optional<Bytes> part(std::int64_t start, std::int64_t size, bool isCompressed) const {
        const auto rest = m_record.subspan(static_cast<std::size_t>(start));
        const auto length = static_cast<std::size_t>(size);
        // The literal expansion would allocate what cannot be there.
        if (isCompressed && length >= beyondReach(rest.size())) return std::nullopt;
        if (isCompressed) return expandRLE2(withBelievableLength(rest, length), length);
        if (length > rest.size()) return std::nullopt;
        return Bytes(rest.begin(), rest.begin() + size);
    }

    std::optional<FrameImage> decodeSprite() const {
        if (m_record.size() < 24) return std::nullopt;
        const int form = m_record[0], colourMode = m_record[1], control = m_record[3];
        const int w = number(4, 2), h = number(6, 2);
        if (form == 0 || w < 1 || w > 8192 || h < 1 || h > 8192) return std::nullopt;
        const auto recordSize = static_cast<std::int64_t>(m_record.size());
        const std::int64_t patternStart = std::int64_t{12} + number(12, 4);
        const std::int64_t maskStart = std::int64_t{16} + number(16, 4);
        if (patternStart < 0 || patternStart >= recordSize) return std::nullopt;

        const bool isMode4 = colourMode == 0 && form == 1;
        const int bpp = colourMode == 64 ? 4 : colourMode == 32 || colourMode == 33 ? 2 : 0;
        if (bpp == 0 && !isMode4) return std::nullopt;
        const int stride = ((isMode4 ? 2 * ((w + 7) / 8) : bpp * w) + 3) & ~3;
        const auto pattern = part(patternStart, std::int64_t{stride} * h, (control & 0x40) != 0);
        if (!pattern) return std::nullopt;
        const bool hasAlpha = (control & 0x20) != 0;
        std::optional<Bytes> mask;
        if (maskStart != 16 && maskStart >= 0 && maskStart < recordSize)
            mask = part(maskStart, std::int64_t{hasAlpha ? w : stride} * h, (control & 0x80) != 0);

        FrameImage image{w, h, {}};
        image.pixels.reserve(std::size_t{4} * static_cast<std::size_t>(w) * static_cast<std::size_t>(h));
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                const auto o = static_cast<std::size_t>(y * stride + (isMode4 ? x / 8 * 2 : x * bpp));
                const unsigned bit = isMode4 ? 0x80U >> (x % 8) : 0xFF;
                Pixel pixel = isMode4 ? mode4(*pattern, o, bit) : colour(*pattern, o, colourMode);
                if (mask && hasAlpha) {
                    pixel[3] = (*mask)[static_cast<std::size_t>(y * w + x)];
                } else if (mask) {
                    unsigned any = 0;
                    for (std::size_t i = 0; i < (isMode4 ? 2U : static_cast<unsigned>(bpp)); ++i)
                        any |= (*mask)[o + i] & bit;
                    pixel[3] = any != 0 ? 255 : 0;
                }
                for (std::size_t c = 0; c < 3; ++c)
                    if (pixel[3] < 255)
                        pixel[c] = static_cast<unsigned>(std::uint64_t{pixel[3]} * pixel[c] * 32897 >> 23);
                append(image, pixel);
            }
        }
        return image;
    }

    static Pixel mode4(const Bytes& pattern, std::size_t o, unsigned bit) {
        const bool green = (pattern[o] & bit) != 0, red = (pattern[o + 1] & bit) != 0;
        return {red ? 255U : 0U, green ? 255U : 0U, red && green ? 255U : 0U, 255};
    }

    Pixel colour(const Bytes& pattern, std::size_t o, int colourMode) const {
        using enum Mode32Interpretation;
        if (colourMode == 64) return {pattern[o], pattern[o + 1], pattern[o + 2], 255};
        const unsigned bigEndian = static_cast<unsigned>(pattern[o] << 8 | pattern[o + 1]);
        const unsigned littleEndian = static_cast<unsigned>(pattern[o + 1] << 8 | pattern[o]);
        if (colourMode == 33)
            return {(bigEndian >> 6 & 31) * 255 / 31, (bigEndian >> 11) * 255 / 31,
                    (bigEndian >> 1 & 31) * 255 / 31, 255};
        if (m_interpretation == rgb565BE) return rgb565(bigEndian);
        if (m_interpretation == rgb565LE) return rgb565(littleEndian);
        const unsigned v = m_interpretation == qpcPackedBE ? bigEndian : littleEndian;
        return {(v >> 3 & 31) * 255 / 31, ((v >> 13) * 8 + (v & 7)) * 255 / 63, (v >> 8 & 31) * 255 / 31,
                255};
    }

    std::span<const std::uint8_t> m_record;
    Mode32Interpretation m_interpretation;
};

}  // namespace zeb::reference
