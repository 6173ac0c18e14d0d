#include "conversion/comparison/SpatialCIELAB.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <cmath>
#include <numbers>
#include <span>

#include "conversion/comparison/GaussianBlur.h"

namespace zeb {
namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>;
using Planes = std::array<Plane, 3>;

/// Linear sRGB to XYZ, IEC 61966-2-1; the rows add up to the white of D65.
constexpr Matrix xyzFromRGB = {{{.4124564, .3575761, .1804375},  //
                                {.2126729, .7151522, .0721750},
                                {.0193339, .1191920, .9503041}}};
constexpr Matrix opponentFromXYZ = {{{.279, .72, -.107},  //
                                     {-.449, .29, -.077},
                                     {.086, -.59, .501}}};

/// exp(-(d / spread)^2) with d in degrees.
struct Blur {
    double weight;
    double spread;
};
constexpr std::array<Blur, 3> luminanceBlurs = {{{.921, .0283}, {.105, .133}, {-.108, 4.336}}};
constexpr std::array<Blur, 2> redGreenBlurs = {{{.531, .0392}, {.330, .494}}};
constexpr std::array<Blur, 2> blueYellowBlurs = {{{.488, .0536}, {.371, .386}}};
constexpr std::array<std::span<const Blur>, 3> blursOfPlanes = {luminanceBlurs, redGreenBlurs,
                                                                blueYellowBlurs};

constexpr Vector times(const Matrix& matrix, const Vector& vector) {
    Vector result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k)
            result[i] += matrix[i][k] * vector[k];
    }
    return result;
}

constexpr Matrix inverse(const Matrix& m) {
    const auto cofactor = [&m](std::size_t row, std::size_t column) {
        const std::size_t r1 = (row + 1) % 3, r2 = (row + 2) % 3;
        const std::size_t c1 = (column + 1) % 3, c2 = (column + 2) % 3;
        return m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1];
    };
    const double determinant = m[0][0] * cofactor(0, 0) + m[0][1] * cofactor(0, 1) + m[0][2] * cofactor(0, 2);
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t k = 0; k < 3; ++k)
            result[i][k] = cofactor(k, i) / determinant;
    }
    return result;
}

constexpr Matrix xyzFromOpponent = inverse(opponentFromXYZ);
constexpr Vector white = times(xyzFromRGB, {1, 1, 1});

Planes opponentPlanes(const MeasuredPicture& picture) {
    const LinearLight light = linearLight(picture);
    Planes planes;
    planes.fill(Plane(picture.count()));
    for (std::size_t i = 0; i < picture.count(); ++i) {
        const Vector opponent =
            times(opponentFromXYZ, times(xyzFromRGB, {light.red[i], light.green[i], light.blue[i]}));
        for (std::size_t k = 0; k < 3; ++k)
            planes[k][i] = static_cast<float>(opponent[k]);
    }
    return planes;
}

Plane seen(const Plane& plane, int width, int height, std::span<const Blur> blurs, double pixelsPerDegree) {
    double sum = 0;
    for (const Blur& blur : blurs)
        sum += blur.weight;
    Plane result(plane.size());
    for (const Blur& blur : blurs) {
        const double sigma = blur.spread * pixelsPerDegree / std::numbers::sqrt2;
        const auto weight = static_cast<float>(blur.weight / sum);
        const Plane blurred = gaussianBlur(plane, width, height, sigma);
        for (std::size_t i = 0; i < result.size(); ++i)
            result[i] += weight * blurred[i];
    }
    return result;
}

/// The function of CIELAB (CIE 15). The blurs of the planes differ, so that their sum may be less than no
/// light, which counts as none: CIELAB has no colours there.
float compressed(double t) {
    constexpr double limit = 6.0 / 29;
    return t > limit * limit * limit ? std::cbrt(static_cast<float>(t))
                                     : static_cast<float>(std::max(t, 0.0) / (3 * limit * limit) + 4.0 / 29);
}

/// Replaces opponent planes by L*, a* and b*.
void convertToLab(Planes& planes) {
    for (std::size_t i = 0; i < planes[0].size(); ++i) {
        const Vector xyz = times(xyzFromOpponent, {planes[0][i], planes[1][i], planes[2][i]});
        const float x = compressed(xyz[0] / white[0]);
        const float y = compressed(xyz[1] / white[1]);
        const float z = compressed(xyz[2] / white[2]);
        planes[0][i] = 116 * y - 16;
        planes[1][i] = 500 * (x - y);
        planes[2][i] = 200 * (y - z);
    }
}

Planes seenLab(const MeasuredPicture& picture, double pixelsPerDegree) {
    Planes planes = opponentPlanes(picture);
    for (std::size_t k = 0; k < 3; ++k)
        planes[k] = seen(planes[k], picture.width, picture.height, blursOfPlanes[k], pixelsPerDegree);
    convertToLab(planes);
    return planes;
}

}  // namespace

double spatialColourDifference(const MeasuredPicture& film, const MeasuredPicture& movie,
                               double pixelsPerDegree) {
    assert(film.width == movie.width && film.height == movie.height);
    const Planes a = seenLab(film, pixelsPerDegree);
    const Planes b = seenLab(movie, pixelsPerDegree);
    double sum = 0;
    for (std::size_t i = 0; i < film.count(); ++i) {
        const float lightness = a[0][i] - b[0][i];
        const float redGreen = a[1][i] - b[1][i];
        const float blueYellow = a[2][i] - b[2][i];
        sum += std::sqrt(lightness * lightness + redGreen * redGreen + blueYellow * blueYellow);
    }
    return sum / static_cast<double>(film.count());
}

}  // namespace zeb
