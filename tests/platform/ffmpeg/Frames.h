#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "platform/ffmpeg/FramePicture.h"
#include "platform/ffmpeg/Handles.h"
#include "platform/ffmpeg/Libraries.h"

/// Frames as decoders deliver them, made by hand.
namespace zeb::test {

using Colour = std::array<int, 4>;  // R, G, B, A; 0 ... 255
using Painter = std::function<Colour(int x, int y)>;

/// A frame of the format, painted; YCbCr formats by the matrix of BT.601, limited range unless told
/// otherwise.
ffmpeg::Frame paintedFrame(AVPixelFormat format, int width, int height, const Painter& painter,
                           bool isFullRange = false);

/// A frame of one value per component, as coded: for planar formats of up to 8 bits or of 9 to 16,
/// little-endian.
ffmpeg::Frame codedFrame(AVPixelFormat format, int width, int height, std::array<int, 3> values);

std::shared_ptr<const Picture> picture(ffmpeg::Frame frame, const ffmpeg::Orientation& orientation = {},
                                       ffmpeg::Ratio sampleAspect = {1, 1});

/// R, G, B, A in the middle of a picture that was drawn to 8 x 8.
Colour colourOf(const Picture& picture, DrawingColourSpace colourSpace = DrawingColourSpace::deviceRGB);

}  // namespace zeb::test
