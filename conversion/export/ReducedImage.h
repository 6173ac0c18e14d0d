#pragma once

#include "codec/FrameDecoder.h"

namespace zeb {

/// A picture made smaller until neither side is longer than `longestSide` (at least 1), its proportions kept,
/// each pixel the mean of those that it covers (box filter over the stored, premultiplied values). One that
/// is small enough stays as it is.
FrameImage reducedImage(FrameImage image, int longestSide);

}  // namespace zeb
