#pragma once

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Returns the mean squared error over the three channels of two pictures of the same size. The range of a
/// channel counts as 1.
double meanSquaredError(const MeasuredPicture& film, const MeasuredPicture& movie);

/// Like `meanSquaredError`, but of linear light blurred by a Gaussian of 2 pixels, so that a pattern of dots
/// counts as the colour that it mixes.
double blurredMeanSquaredError(const MeasuredPicture& film, const MeasuredPicture& movie);

/// Returns the peak signal-to-noise ratio in dB for a mean squared error of a range of 1; infinity for 0.
double peakSignalRatio(double meanSquaredError);

}  // namespace zeb
