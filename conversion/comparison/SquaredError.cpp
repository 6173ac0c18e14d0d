#include "conversion/comparison/SquaredError.h"

#include <cassert>
#include <cmath>
#include <cstdint>

#include "conversion/comparison/GaussianBlur.h"

namespace zeb {

double meanSquaredError(const MeasuredPicture& film, const MeasuredPicture& movie) {
    assert(film.width == movie.width && film.height == movie.height);
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < 4 * film.count(); ++i) {
        if (i % 4 == 3) continue;
        const int difference = film.pixels[i] - movie.pixels[i];
        sum += difference * difference;
    }
    return static_cast<double>(sum) / (3 * 255.0 * 255.0 * static_cast<double>(film.count()));
}

double blurredMeanSquaredError(const MeasuredPicture& film, const MeasuredPicture& movie) {
    assert(film.width == movie.width && film.height == movie.height);
    constexpr double sigma = 2;
    const LinearLight a = linearLight(film);
    const LinearLight b = linearLight(movie);
    double sum = 0;
    for (Plane LinearLight::*channel : {&LinearLight::red, &LinearLight::green, &LinearLight::blue}) {
        // The blur is linear, so the blurred difference is the difference of the blurred pictures.
        Plane difference(film.count());
        for (std::size_t i = 0; i < difference.size(); ++i)
            difference[i] = (a.*channel)[i] - (b.*channel)[i];
        for (const double value : gaussianBlur(difference, film.width, film.height, sigma))
            sum += value * value;
    }
    return sum / (3 * static_cast<double>(film.count()));
}

double peakSignalRatio(double meanSquaredError) {
    return 10 * std::log10(1 / meanSquaredError);
}

}  // namespace zeb
