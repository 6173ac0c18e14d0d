#pragma once

#include <optional>

#include "conversion/comparison/MeasuredPicture.h"

namespace zeb {

/// Two consecutive pictures of the same size.
struct PicturePair {
    MeasuredPicture first;
    MeasuredPicture second;
};

/// Returns the share of the still pixels, 0 ... 1, that change in the movie: still are the pixels whose film
/// colours differ by at most 2 of 255 in each channel, and a change is any other colour. All pictures have
/// the same size.
///
/// Returns nothing, so that the pair does not count, if the pictures of the film are equal, or if fewer than
/// 1 % of their pixels are still (a cut, or a pan).
std::optional<double> flicker(const PicturePair& film, const PicturePair& movie);

}  // namespace zeb
