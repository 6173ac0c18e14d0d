#pragma once

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Returns the mean S-CIELAB difference of two pictures of the same size: 0 for equal pictures, about 1 for a
/// difference that is just visible. Seen from a distance at which `pixelsPerDegree` pixels (positive) span
/// one degree of the visual field.
///
/// Zhang and Wandell, "A spatial extension of CIELAB for digital color image reproduction", 1996: the
/// pictures are converted to opponent planes (luminance, red-green, blue-yellow), each plane is blurred as
/// the eye does, and the mean of the CIE 1976 differences of the results is taken. White is D65. A negative
/// X, Y or Z of a blurred picture counts as 0.
double spatialColourDifference(const MeasuredPicture& film, const MeasuredPicture& movie,
                               double pixelsPerDegree);

}  // namespace zeb
