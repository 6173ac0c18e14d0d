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

/// Decodes stored frame records into pictures: sprites of Mode 4, 32, 33 or 64 with masks or alpha,
/// compressed or not, and pixels without a sprite header. Accepts arbitrary bytes. Keeps working memory
/// between frames. Used by one thread at a time.
class FrameDecoder {
public:
    /// Byte order and layout of 16-bit Mode 32 pixels; the default is the encoder's layout.
    Mode32Interpretation mode32Interpretation = Mode32Interpretation::rgb565LE;

    /// Decodes a record. Three forms are tried in this order: a sprite (see `codec/SpriteEncoder.h`) of at
    /// most 8192 x 8192 pixels; raw pixels after a width and a height of 2 bytes each, big-endian, and 4 more
    /// bytes; raw pixels of the size `width` x `height` from the file header. Raw pixels are 32-bit pixels as
    /// in `FrameImage`, or 16-bit RGB 5-6-5 pixels, low byte first, depending on the number of bytes.
    ///
    /// Returns nothing for a record in none of these forms, with the reason in `lastDecodeDebug`. Throws only
    /// `std::bad_alloc`. Memory is limited to the size that the record's bytes can fill.
    std::optional<FrameImage> decodeFrame(std::span<const std::uint8_t> record, int width, int height);

    /// Returns false for a record that is not worth reading: `size`, its length in bytes, is far larger than
    /// its dimensions can fill. `start` is its first 24 bytes, or the whole of a shorter record.
    static bool canDecode(std::span<const std::uint8_t> start, std::uint64_t size, int width, int height);

    /// A diagnostic line about the last call of `decodeFrame`.
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
