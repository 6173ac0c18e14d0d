#include "conversion/comparison/Detail.h"

#include <cassert>
#include <cmath>
#include <numeric>

#include "conversion/comparison/GaussianBlur.h"

namespace zeb {
namespace {

/// Standard deviation that rounding alone may cause.
constexpr double flatDeviation = 1e-6;

Plane detailOf(const MeasuredPicture& picture) {
    Plane lightness = gaussianBlur(luminance(picture), picture.width, picture.height, 1);
    for (float& value : lightness)
        value = std::cbrt(value);
    const Plane coarse = gaussianBlur(lightness, picture.width, picture.height, 4);
    for (std::size_t i = 0; i < lightness.size(); ++i)
        lightness[i] -= coarse[i];
    return lightness;
}

double meanOf(const Plane& plane) {
    return std::accumulate(plane.begin(), plane.end(), 0.0) / static_cast<double>(plane.size());
}

}  // namespace

std::optional<double> keptDetail(const MeasuredPicture& film, const MeasuredPicture& movie) {
    assert(film.width == movie.width && film.height == movie.height);
    const Plane a = detailOf(film);
    const Plane b = detailOf(movie);
    const double meanA = meanOf(a);
    const double meanB = meanOf(b);
    double squaresA = 0;
    double squaresB = 0;
    double products = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        squaresA += (a[i] - meanA) * (a[i] - meanA);
        squaresB += (b[i] - meanB) * (b[i] - meanB);
        products += (a[i] - meanA) * (b[i] - meanB);
    }
    const double flat = flatDeviation * flatDeviation * static_cast<double>(a.size());
    if (squaresA < flat) return std::nullopt;
    if (squaresB < flat) return 0;
    return products / std::sqrt(squaresA * squaresB);
}

}  // namespace zeb
