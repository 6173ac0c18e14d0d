#pragma once

#include "codec/FrameDecoder.h"

namespace zeb {

/// Returns the picture reduced so that neither side is longer than `longestSide` (at least 1), with the
/// aspect ratio kept. Each pixel is the mean of the pixels that it covers (box filter over the stored,
/// premultiplied values). A picture that is small enough is returned unchanged.
FrameImage reducedImage(FrameImage image, int longestSide);

/// Returns the picture with each pixel repeated `scale` times in both directions.
FrameImage enlargedImage(const FrameImage& image, int scale);

/// Returns an opaque black picture.
FrameImage blackImage(int width, int height);

/// Returns the picture in another size: from its top left corner, cropped or padded with black.
FrameImage fittedImage(const FrameImage& image, int width, int height);

}  // namespace zeb
