#pragma once

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Returns the mean structural similarity of two pictures of the same size: 1 for equal ones, about 0 for
/// unrelated ones. Wang et al., "Image quality assessment: from error visibility to structural similarity",
/// 2004, on the luma .299 R + .587 G + .114 B of 0 ... 255, with equal weights in windows of 8 x 8 pixels
/// (less in smaller pictures) at every position within the picture, C1 = 6.5025 and C2 = 58.5225.
double structuralSimilarity(const MeasuredPicture& film, const MeasuredPicture& movie);

}  // namespace zeb
