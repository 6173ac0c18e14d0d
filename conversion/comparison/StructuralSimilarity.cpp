#include "conversion/comparison/StructuralSimilarity.h"

#include <algorithm>
#include <cassert>
#include <cstdint>
#include <vector>

namespace zeb {
namespace {

constexpr int windowSide = 8;
constexpr double c1 = 6.5025;   // (.01 x 255)^2
constexpr double c2 = 58.5225;  // (.03 x 255)^2
constexpr double lumaScale = 1000;

/// Sums over pixels. The numbers are integers below 2^53, so the sums are exact.
struct Sums {
    double a = 0, b = 0, aa = 0, bb = 0, ab = 0;

    void add(double lumaA, double lumaB, double sign) {
        a += sign * lumaA;
        b += sign * lumaB;
        aa += sign * lumaA * lumaA;
        bb += sign * lumaB * lumaB;
        ab += sign * lumaA * lumaB;
    }
    void add(const Sums& other, double sign) {
        a += sign * other.a;
        b += sign * other.b;
        aa += sign * other.aa;
        bb += sign * other.bb;
        ab += sign * other.ab;
    }

    double similarity(double pixels) const {
        const double squareScale = pixels * lumaScale * lumaScale;
        const double meanA = a / (pixels * lumaScale);
        const double meanB = b / (pixels * lumaScale);
        const double varianceA = aa / squareScale - meanA * meanA;
        const double varianceB = bb / squareScale - meanB * meanB;
        const double covariance = ab / squareScale - meanA * meanB;
        return (2 * meanA * meanB + c1) * (2 * covariance + c2) /
               ((meanA * meanA + meanB * meanB + c1) * (varianceA + varianceB + c2));
    }
};

/// `lumaScale` times the luma of a pixel.
double luma(const MeasuredPicture& picture, int x, int y) {
    const std::uint8_t* pixel =
        picture.pixels.data() + 4 * (static_cast<std::ptrdiff_t>(y) * picture.width + x);
    return 299 * pixel[0] + 587 * pixel[1] + 114 * pixel[2];
}

}  // namespace

double structuralSimilarity(const MeasuredPicture& film, const MeasuredPicture& movie) {
    assert(film.width == movie.width && film.height == movie.height);
    const int columns = std::min(windowSide, film.width);
    const int rows = std::min(windowSide, film.height);
    std::vector<Sums> columnSums(static_cast<std::size_t>(film.width));
    const auto addRow = [&](int y, double sign) {
        for (int x = 0; x < film.width; ++x)
            columnSums[static_cast<std::size_t>(x)].add(luma(film, x, y), luma(movie, x, y), sign);
    };
    double total = 0;
    for (int y = 0; y < film.height; ++y) {
        addRow(y, 1);
        if (y >= rows) addRow(y - rows, -1);
        if (y < rows - 1) continue;
        Sums window;
        for (int x = 0; x < film.width; ++x) {
            window.add(columnSums[static_cast<std::size_t>(x)], 1);
            if (x >= columns) window.add(columnSums[static_cast<std::size_t>(x - columns)], -1);
            if (x >= columns - 1) total += window.similarity(columns * rows);
        }
    }
    return total / (static_cast<double>(film.width - columns + 1) * (film.height - rows + 1));
}

}  // namespace zeb
