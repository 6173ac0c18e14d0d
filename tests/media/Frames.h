#pragma once

#include <functional>

#include "Clips.h"
#include "media/drawing/FramePicture.h"
#include "media/ffmpeg/Handles.h"
#include "media/ffmpeg/Libraries.h"

/// Frames as decoders deliver them, made by hand.
namespace zeb::test {

ffmpeg::Frame emptyFrame(AVPixelFormat format, int width, int height);

/// A frame of the format, painted; YCbCr formats by the matrix of BT.601, limited range unless told
/// otherwise.
ffmpeg::Frame paintedFrame(AVPixelFormat format, int width, int height,
                           const std::function<Colour(int x, int y)>& painter, bool isFullRange = false);

/// A frame of one value per component, as coded: for planar formats whose planes are of one size, with
/// up to 8 bits or 9 to 16, little-endian.
ffmpeg::Frame codedFrame(AVPixelFormat format, int width, int height, std::array<int, 3> values);

std::shared_ptr<const Picture> picture(ffmpeg::Frame frame, const ffmpeg::Orientation& orientation = {});

/// The colour in the middle of a frame that is drawn to 8 x 8.
Colour colourOf(ffmpeg::Frame frame, DrawingColourSpace colourSpace = DrawingColourSpace::deviceRGB);

inline Colour grey(int level) {
    return {level, level, level, 255};
}

}  // namespace zeb::test
