#pragma once

#include <optional>

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Returns how much of the film's fine detail the movie shows: 1 = all, 0 = none, -1 = inverted. Both
/// pictures have the same size. Returns nothing if the film's picture is flat, so that there is no detail.
///
/// With L = cube root of the luminance blurred by a Gaussian of 1 pixel, the detail of a picture is L minus L
/// blurred by a Gaussian of 4 pixels. The result is Pearson's correlation of the two details, or 0 for a flat
/// movie.
std::optional<double> keptDetail(const MeasuredPicture& film, const MeasuredPicture& movie);

}  // namespace zeb
