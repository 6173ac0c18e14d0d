#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codec/ColourReduction.h"
#include "platform/Picture.h"

namespace zeb {

/// Turns pictures into sprite records, the stored form of a frame, as the QL's pointer environment and SMSQ/E
/// draw them. A record is a header of 24 bytes, its numbers big-endian, and the pattern:
///
///     offset 0  form: 1 in Mode 4, 2 in Mode 32
///            1  colour mode: 0 in Mode 4, else 32
///            3  control: 0x40 when the pattern is compressed
///            4  width, height in pixels (2 bytes each)
///           12  pattern: where it begins, counted from here (4 bytes)
///     and zeros: no hot spot, no mask, no further sprite
///
/// Mode 4 pattern, at offset 32: rows from the top, each of 2 bytes for every 8 pixels and padded to a
/// multiple of 4 bytes. The first byte holds the green bits, the second the red ones, the leftmost pixel
/// highest. Mode 32 pattern, at offset 24: a compressed block (`codec/RLE2.h`) of width x height pixels of 16
/// bits, rows from the top without padding, each pixel low byte first.
///
/// An encoder keeps its working buffers between frames, so each thread uses one of its own; equal pictures
/// give equal records whatever an encoder has done before.
///
/// Every operation on a picture may throw the error of a bitmap that cannot be made, for want of memory
/// (`PlatformError`: domain "ZEBMaker", code -2 in Mode 32; "SpriteEncoder", 1 in Mode 4), or that of the
/// drawing.
class SpriteEncoder {
public:
    /// Mode 4: uncompressed bit planes of the four colours black, red, green, white. Width below 8 is taken
    /// as 8, height below 1 as 1; both are at most 65535. `dither` diffuses the error (Floyd-Steinberg).
    std::vector<std::uint8_t> encodeMode4Sprite(const Picture& picture, int width, int height, bool dither);

    /// Mode 32: 16-bit RGB 5-6-5 pixels, low byte first, run-length compressed ("RLE2"). Sides below 1 are
    /// taken as 1; they are at most 65535, and the pixels less than 4 GiB.
    std::vector<std::uint8_t> encodeMode32Sprite(const Picture& picture, int width, int height);

    // The steps. Their results lie in the encoder's buffers, row after row from the top, and hold until the
    // same step comes again. Sides below 1 are taken as 1.

    /// The picture in sRGB, stretched to width x height: R, G, B, A of 8 bits each, alpha premultiplied.
    std::span<const std::uint8_t> renderRGBA(const Picture& picture, int width, int height);

    /// Mode 32 pixels of width x height RGBA pixels: (r5 << 11) | (g6 << 5) | b5, low byte first.
    std::span<const std::uint8_t> packRGB565(std::span<const std::uint8_t> rgba, int width, int height);

    /// The picture in the stream's own colours, stretched to width x height and reduced to `colours` levels
    /// of brightness: a byte per pixel, 0 the darkest. `colours` below 1 is taken as 1, above 256 as 256.
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
