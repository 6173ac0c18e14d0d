#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "codec/Mode32Interpretation.h"
#include "codec/PixelBytes.h"

namespace zeb {

/// A decoded frame: `width` x `height` pixels of 4 bytes, blue, green, red, alpha, colours multiplied by
/// alpha; top row first, rows not padded. Device RGB.
struct FrameImage {
    int width = 0;
    int height = 0;
    PixelBytes pixels;
};

/// Turns stored frame records back into pictures: sprites of Mode 4, 32, 33 or 64 with masks or alpha,
/// compressed or not, and pixels without a sprite header. Any bytes may come in. Keeps its working memory
/// between frames: one thread at a time.
class FrameDecoder {
public:
    /// How 16-bit Mode 32 pixels are read; the encoder's own layout unless said otherwise.
    Mode32Interpretation mode32Interpretation = Mode32Interpretation::rgb565LE;

    /// Decodes a record: a sprite (its layout: `codec/SpriteEncoder.h`) of at most 8192 x 8192 pixels, else
    /// pixels behind a width and a height of 2 bytes each, big-endian, and 4 more bytes, else nothing but
    /// pixels of the file header's `width` and `height`. Such pixels are 32-bit ones as in `FrameImage`, or
    /// 16-bit ones of RGB 5-6-5, low byte first; their number tells which.
    ///
    /// Nothing when the record is no picture; the reason is in `lastDecodeDebug`. Throws nothing but
    /// `std::bad_alloc`: memory is taken only for what the record's bytes can fill.
    std::optional<FrameImage> decodeFrame(std::span<const std::uint8_t> record, int width, int height);

    /// False when no record of `size` bytes that starts with `start`, its first 24 bytes or all of a shorter
    /// one, is a picture worth its memory: it is far larger than what its own dimensions can fill. To be asked
    /// before such a record is read.
    static bool canDecode(std::span<const std::uint8_t> start, std::uint64_t size, int width, int height);

    /// One line about the last decoding.
    const std::string& lastDecodeDebug() const noexcept { return m_line; }

private:
    struct Sprite;

    std::optional<FrameImage> decodeSprite(std::span<const std::uint8_t> record);
    std::span<const std::uint8_t> findMask(std::span<const std::uint8_t> record, const Sprite& sprite);
    void note(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void noteSignature(const char* name, std::span<const std::uint8_t> block);

    std::string m_line;
    std::vector<std::uint8_t> m_pattern;
    std::vector<std::uint8_t> m_mask;
};

}  // namespace zeb
