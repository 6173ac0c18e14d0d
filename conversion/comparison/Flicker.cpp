#include "conversion/comparison/Flicker.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>

namespace zeb {
namespace {

int largestDifference(const PicturePair& pair, std::size_t pixel) {
    int largest = 0;
    for (std::size_t i = 4 * pixel; i < 4 * pixel + 3; ++i)
        largest = std::max(largest, std::abs(pair.first.pixels[i] - pair.second.pixels[i]));
    return largest;
}

}  // namespace

std::optional<double> flicker(const PicturePair& film, const PicturePair& movie) {
    assert(film.first.count() == film.second.count() && film.first.count() == movie.first.count() &&
           movie.first.count() == movie.second.count());
    constexpr int stillUpTo = 2;
    constexpr std::size_t fewestStill = 100;  // one pixel in so many
    const std::size_t count = film.first.count();
    std::size_t still = 0;
    std::size_t changed = 0;
    bool isEqual = true;
    for (std::size_t i = 0; i < count; ++i) {
        const int difference = largestDifference(film, i);
        isEqual = isEqual && difference == 0;
        if (difference > stillUpTo) continue;
        ++still;
        changed += largestDifference(movie, i) > 0;
    }
    if (isEqual || still == 0 || still * fewestStill < count) return std::nullopt;
    return static_cast<double>(changed) / static_cast<double>(still);
}

}  // namespace zeb
