#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codec/ColourReduction.h"
#include "platform/base/Picture.h"

namespace zeb {

/// Encodes pictures as sprite records, the stored form of a frame. The QL's pointer environment and SMSQ/E
/// draw them. A record is a header of 24 bytes, with big-endian numbers, and the pattern:
///
///     offset 0  form: 1 in Mode 4, 2 in Mode 32
///            1  colour mode: 0 in Mode 4, 32 in Mode 32
///            3  control: 0x40 if the pattern is compressed
///            4  width, height in pixels (2 bytes each)
///           12  pattern: its offset from this field (4 bytes)
///     The other bytes are 0: no hot spot, no mask, no further sprite.
///
/// Mode 4 pattern, at offset 32: rows from the top, each of 2 bytes for every 8 pixels and padded to a
/// multiple of 4 bytes. The first byte holds the green bits, the second the red ones, the leftmost pixel
/// highest. Mode 32 pattern, at offset 24: a compressed block (`codec/RLE2.h`) of width x height pixels of 16
/// bits, rows from the top without padding, each pixel low byte first.
///
/// An encoder keeps working buffers between frames: each thread uses a separate encoder. Equal pictures give
/// equal records, independent of earlier calls.
///
/// Each operation on a picture throws the error of the drawing, or `PlatformError` if memory for the bitmap
/// is short (domain "ZEBMaker", code -2 in Mode 32; domain "SpriteEncoder", code 1 in Mode 4).
class SpriteEncoder {
public:
    /// Returns a Mode 4 record: uncompressed bit planes of the four colours black, red, green, white. The
    /// width is at least 8, the height at least 1, both at most 65535. `dither` diffuses the error
    /// (Floyd-Steinberg).
    std::vector<std::uint8_t> encodeMode4Sprite(const Picture& picture, int width, int height, bool dither);

    /// Returns a Mode 32 record: 16-bit RGB 5-6-5 pixels, low byte first, run-length compressed ("RLE2").
    /// Both sides are at least 1 and at most 65535; all pixels together are less than 4 GiB.
    std::vector<std::uint8_t> encodeMode32Sprite(const Picture& picture, int width, int height);

    /// Packs `indices` (one byte per pixel: 0 black, 1 red, 2 green, 3 white) into a Mode 4 record. The width
    /// is 8 ... 65535, the height 1 ... 65535.
    static std::vector<std::uint8_t> packMode4Sprite(std::span<const std::uint8_t> indices, int width,
                                                     int height);

    /// Packs 16-bit pixels, low byte first, into a Mode 32 record. The sides are those of
    /// `encodeMode32Sprite`.
    std::vector<std::uint8_t> packMode32Sprite(std::span<const std::uint8_t> pixels, int width, int height);

    // The single steps. Results are in the encoder's buffers, rows from the top, and valid until the next
    // call of the same step. Sides below 1 are taken as 1.

    /// Returns the picture in sRGB, stretched to width x height: R, G, B, A of 8 bits each, alpha
    /// premultiplied.
    std::span<const std::uint8_t> renderRGBA(const Picture& picture, int width, int height);

    /// Returns the Mode 32 pixels of width x height RGBA pixels: (r5 << 11) | (g6 << 5) | b5, low byte first.
    std::span<const std::uint8_t> packRGB565(std::span<const std::uint8_t> rgba, int width, int height);

    /// Returns the picture, in the stream's colours without conversion, stretched to width x height and
    /// reduced to `colours` levels of brightness: a byte per pixel, 0 the darkest. `colours` is limited to 1
    /// ... 256.
    std::span<const std::uint8_t> quantizeLuma(const Picture& picture, int width, int height, int colours,
                                               bool dither);

private:
    void draw(const Picture& picture, int width, int height, DrawingColourSpace colourSpace);

    std::vector<std::uint8_t> m_rgba;
    std::vector<std::uint8_t> m_pixels;
    std::vector<std::uint8_t> m_packets;
    std::vector<std::uint8_t> m_indices;
    LuminanceQuantiser m_quantiser{4};
};

}  // namespace zeb
