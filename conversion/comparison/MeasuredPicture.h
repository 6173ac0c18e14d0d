#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// A picture to measure: `width` x `height` pixels of 4 bytes, R, G, B, A, in sRGB; top row first, rows not
/// padded; at least one pixel. Colours are premultiplied and alpha is ignored, so transparent parts count as
/// shown over black.
struct MeasuredPicture {
    std::span<const std::uint8_t> pixels;
    int width = 0;
    int height = 0;

    std::size_t count() const { return static_cast<std::size_t>(width) * static_cast<std::size_t>(height); }
};

/// One number per pixel, in the order of the pixels.
using Plane = std::vector<float>;

/// The red, green and blue light of a picture, 0 ... 1.
struct LinearLight {
    Plane red;
    Plane green;
    Plane blue;
};

/// Returns the light of a picture: each channel decoded by the transfer function of IEC 61966-2-1.
LinearLight linearLight(const MeasuredPicture& picture);

/// Returns the relative luminance (CIE Y), 0 ... 1: .2126 R + .7152 G + .0722 B in linear light.
Plane luminance(const MeasuredPicture& picture);

}  // namespace zeb
