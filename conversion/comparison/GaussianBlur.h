#pragma once

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Returns `plane` convolved with a Gaussian of standard deviation `sigma` pixels (positive), in both
/// directions. The weights are samples of exp(-d^2 / (2 sigma^2)) up to 4 sigma, divided by their sum. The
/// plane is mirrored at its borders, with the border pixels repeated: ... c b a | a b c ...
///
/// From `firstBoxSigma` on, four box filters of the same variance replace the Gaussian, which makes the time
/// independent of `sigma` (Gwosdek et al., "Theoretical Foundations of Gaussian Convolution by Extended Box
/// Filtering", 2011). The result differs by less than 1 % of the range of the plane.
Plane gaussianBlur(const Plane& plane, int width, int height, double sigma);

/// 17 pixels: a convolution is faster below.
inline constexpr double firstBoxSigma = 17;

}  // namespace zeb
