#pragma once

#include <functional>

#include "Clips.h"
#include "media/drawing/FramePicture.h"
#include "media/ffmpeg/Handles.h"
#include "media/ffmpeg/Libraries.h"

/// Hand-made frames like those of decoders.
namespace zeb::test {

ffmpeg::Frame emptyFrame(AVPixelFormat format, int width, int height);

/// A painted frame in the given format. YCbCr formats use the BT.601 matrix and limited range by default.
ffmpeg::Frame paintedFrame(AVPixelFormat format, int width, int height,
                           const std::function<Colour(int x, int y)>& painter, bool isFullRange = false);

/// A frame with one coded value per component. For planar formats with planes of equal size and 8 to 16 bits,
/// little-endian.
ffmpeg::Frame codedFrame(AVPixelFormat format, int width, int height, std::array<int, 3> values);

std::shared_ptr<const Picture> picture(ffmpeg::Frame frame, const ffmpeg::Orientation& orientation = {});

/// The colour in the middle of a frame drawn at 8 x 8.
Colour colourOf(ffmpeg::Frame frame, DrawingColourSpace colourSpace = DrawingColourSpace::deviceRGB);

inline Colour grey(int level) {
    return {level, level, level, 255};
}

}  // namespace zeb::test
