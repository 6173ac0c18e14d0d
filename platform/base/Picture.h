#pragma once

#include <cstdint>
#include <span>

namespace zeb {

/// The colour space of a drawn picture.
enum class DrawingColourSpace {
    sRGB,       ///< colours are converted to sRGB (IEC 61966-2-1), as a colour-managed desktop shows them
    deviceRGB,  ///< the stream's own RGB values, not converted
};

/// The part of a picture that is drawn, and its position in the bitmap. The part is cut out of the upright
/// picture first, then turned, then mirrored.
struct Framing {
    /// Edges of the part as shares of the picture's sides: 0 is the left or the top edge, 1 the right or the
    /// bottom one. left < right, top < bottom.
    double left = 0, top = 0, right = 1, bottom = 1;
    int quarterTurns = 0;   ///< clockwise, 0 ... 3
    bool mirrored = false;  ///< left and right exchanged

    bool operator==(const Framing&) const = default;
};

/// A bitmap in memory, the target of a drawing.
///
/// `pixels` holds width x height x 4 bytes: R, G, B, A of 8 bits each, alpha premultiplied, top row first,
/// rows not padded.
struct BitmapContext {
    std::span<std::uint8_t> pixels;
    int width;
    int height;
    DrawingColourSpace colourSpace;
    Framing framing{};
};

/// A picture of any size and pixel format from the media layer. Immutable; `draw` may be called from several
/// threads at once.
class Picture {
public:
    Picture() = default;
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;
    virtual ~Picture() = default;

    /// Displayed size in square pixels: upright, sample aspect ratio applied; at least 1.
    virtual int width() const = 0;
    virtual int height() const = 0;

    /// Draws the framed part of the picture with high-quality interpolation, stretched to the size of the
    /// bitmap in one step. Sets every pixel; transparent parts become black with their transparency. Throws
    /// `PlatformError` or `std::bad_alloc` on failure.
    virtual void draw(const BitmapContext& bitmap) const = 0;
};

}  // namespace zeb
