#pragma once

#include "codec/FrameDecoder.h"

namespace zeb {

/// Returns the picture reduced so that neither side is longer than `longestSide` (at least 1), with the
/// aspect ratio kept. Each pixel is the mean of the pixels that it covers (box filter over the stored,
/// premultiplied values). A picture that is small enough is returned unchanged.
FrameImage reducedImage(FrameImage image, int longestSide);

}  // namespace zeb
