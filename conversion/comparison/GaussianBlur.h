#pragma once

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Returns `plane` convolved with a Gaussian of standard deviation `sigma` pixels (positive), in both
/// directions. The weights are samples of exp(-d^2 / (2 sigma^2)) up to 4 sigma, divided by their sum. The
/// plane is mirrored at its borders, with the border pixels repeated: ... c b a | a b c ...
///
/// From `firstBoxSigma` on, box filters of the same variance replace the Gaussian, so that the time does not
/// depend on `sigma` (Gwosdek et al., "Theoretical Foundations of Gaussian Convolution by Extended Box
/// Filtering", 2011): 3 times the result of six boxes minus 2 times that of four. The result differs by less
/// than 0.2 % of the range of the plane.
Plane gaussianBlur(const Plane& plane, int width, int height, double sigma);

/// 17 pixels: a convolution is faster below.
inline constexpr double firstBoxSigma = 17;

}  // namespace zeb
