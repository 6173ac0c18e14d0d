#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "conversion/comparison/Detail.h"
#include "conversion/comparison/Flicker.h"
#include "conversion/comparison/GaussianBlur.h"
#include "conversion/comparison/SpatialCIELAB.h"
#include "conversion/comparison/SquaredError.h"
#include "conversion/comparison/StructuralSimilarity.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;
using Colour = std::array<std::uint8_t, 3>;
using Literal = std::vector<double>;

constexpr Colour black{0, 0, 0}, white{255, 255, 255}, red{255, 0, 0}, green{0, 255, 0}, blue{0, 0, 255};

struct Image {
    Bytes bytes;
    int width;
    int height;

    MeasuredPicture view() const { return {bytes, width, height}; }
    std::uint8_t* pixel(int x, int y) { return bytes.data() + 4 * (y * width + x); }
};

Image flat(const Colour& colour, int width = 12, int height = 9) {
    Image image{{}, width, height};
    for (int i = 0; i < width * height; ++i)
        image.bytes.insert(image.bytes.end(), {colour[0], colour[1], colour[2], 255});
    return image;
}

/// A random picture. `levels`: number of different values of a channel.
Image noise(int width, int height, unsigned seed, int levels = 256) {
    std::minstd_rand random(seed);
    Image image = flat(black, width, height);
    for (std::uint8_t& byte : image.bytes)
        byte = static_cast<std::uint8_t>((random() >> 8) % static_cast<unsigned>(levels) * 255U /
                                         static_cast<unsigned>(levels - 1));
    return image;
}

// MARK: Literal loops, in double precision and without any table

int mirrored(int i, int size) {
    while (i < 0 || i >= size)
        i = i < 0 ? -1 - i : 2 * size - 1 - i;
    return i;
}

Literal blurredAlong(const Literal& plane, int width, int height, double sigma, int dx, int dy) {
    const int radius = static_cast<int>(std::ceil(5 * sigma));
    Literal result(plane.size());
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            double sum = 0, weights = 0;
            for (int d = -radius; d <= radius; ++d) {
                const double weight = std::exp(-d * d / (2 * sigma * sigma));
                const int from = mirrored(y + d * dy, height) * width + mirrored(x + d * dx, width);
                sum += weight * plane[static_cast<std::size_t>(from)];
                weights += weight;
            }
            result[static_cast<std::size_t>(y * width + x)] = sum / weights;
        }
    }
    return result;
}

Literal blurred(const Literal& plane, int width, int height, double sigma) {
    return blurredAlong(blurredAlong(plane, width, height, sigma, 1, 0), width, height, sigma, 0, 1);
}

double decoded(std::uint8_t value) {
    const double v = value / 255.0;
    return v <= .04045 ? v / 12.92 : std::pow((v + .055) / 1.055, 2.4);
}

Literal mixed(const Image& image, double r, double g, double b) {
    Literal plane;
    for (std::size_t i = 0; i < image.bytes.size(); i += 4)
        plane.push_back(r * decoded(image.bytes[i]) + g * decoded(image.bytes[i + 1]) +
                        b * decoded(image.bytes[i + 2]));
    return plane;
}

/// The X, Y or Z of linear sRGB with white at 1, as published to four digits.
constexpr double matrix[3][3] = {{.4124, .3576, .1805}, {.2126, .7152, .0722}, {.0193, .1192, .9505}};
constexpr double whiteXYZ[3] = {.9505, 1, 1.089};

std::array<Literal, 3> seenLab(const Image& image, double pixelsPerDegree) {
    Literal xyz[3];
    for (int i = 0; i < 3; ++i)
        xyz[i] = mixed(image, matrix[i][0], matrix[i][1], matrix[i][2]);
    constexpr double opponent[3][3] = {{.279, .72, -.107}, {-.449, .29, -.077}, {.086, -.59, .501}};
    const std::vector<std::array<double, 2>> blurs[3] = {{{.921, .0283}, {.105, .133}, {-.108, 4.336}},
                                                         {{.531, .0392}, {.330, .494}},
                                                         {{.488, .0536}, {.371, .386}}};
    const std::size_t count = xyz[0].size();
    Literal seen[3];
    for (int i = 0; i < 3; ++i) {
        Literal plane(count);
        for (std::size_t p = 0; p < count; ++p)
            plane[p] = opponent[i][0] * xyz[0][p] + opponent[i][1] * xyz[1][p] + opponent[i][2] * xyz[2][p];
        seen[i].resize(count);
        double weights = 0;
        for (const auto& [weight, spread] : blurs[i]) {
            weights += weight;
            const Literal part =
                blurred(plane, image.width, image.height, spread * pixelsPerDegree / std::sqrt(2));
            for (std::size_t p = 0; p < count; ++p)
                seen[i][p] += weight * part[p];
        }
        for (double& value : seen[i])
            value /= weights;
    }
    // The inverse of `opponent`, by a linear algebra library.
    constexpr double back[3][3] = {{.626554504, -1.867177598, -.153156373},
                                   {1.369855450, .934755824, .436229005},
                                   {1.505650755, 1.421323772, 2.536021080}};
    std::array<Literal, 3> lab;
    for (std::size_t p = 0; p < count; ++p) {
        double f[3];
        for (int i = 0; i < 3; ++i) {
            const double value = back[i][0] * seen[0][p] + back[i][1] * seen[1][p] + back[i][2] * seen[2][p];
            const double t = std::max(value / whiteXYZ[i], 0.0);
            f[i] = t > 216.0 / 24389 ? std::cbrt(t) : (24389.0 / 27 * t + 16) / 116;
        }
        lab[0].push_back(116 * f[1] - 16);
        lab[1].push_back(500 * (f[0] - f[1]));
        lab[2].push_back(200 * (f[1] - f[2]));
    }
    return lab;
}

double literalDifference(const Image& a, const Image& b, double pixelsPerDegree) {
    const auto labA = seenLab(a, pixelsPerDegree), labB = seenLab(b, pixelsPerDegree);
    double sum = 0;
    for (std::size_t p = 0; p < labA[0].size(); ++p)
        sum += std::hypot(labA[0][p] - labB[0][p], labA[1][p] - labB[1][p], labA[2][p] - labB[2][p]);
    return sum / static_cast<double>(labA[0].size());
}

Literal literalDetail(const Image& image) {
    Literal plane = blurred(mixed(image, .2126, .7152, .0722), image.width, image.height, 1);
    for (double& value : plane)
        value = std::cbrt(value);
    const Literal coarse = blurred(plane, image.width, image.height, 4);
    for (std::size_t i = 0; i < plane.size(); ++i)
        plane[i] -= coarse[i];
    return plane;
}

double covariance(const Literal& a, const Literal& b) {
    double sumA = 0, sumB = 0, products = 0;
    for (std::size_t i = 0; i < a.size(); ++i) {
        sumA += a[i];
        sumB += b[i];
        products += a[i] * b[i];
    }
    const auto count = static_cast<double>(a.size());
    return products / count - sumA / count * (sumB / count);
}

double literalSimilarity(Image a, Image b, int windowWidth, int windowHeight) {
    const auto luma = [](Image& image, int x, int y) {
        const std::uint8_t* pixel = image.pixel(x, y);
        return .299 * pixel[0] + .587 * pixel[1] + .114 * pixel[2];
    };
    double total = 0;
    int windows = 0;
    for (int top = 0; top + windowHeight <= a.height; ++top) {
        for (int left = 0; left + windowWidth <= a.width; ++left) {
            Literal valuesA, valuesB;
            double meanA = 0, meanB = 0;
            for (int y = top; y < top + windowHeight; ++y) {
                for (int x = left; x < left + windowWidth; ++x) {
                    valuesA.push_back(luma(a, x, y));
                    valuesB.push_back(luma(b, x, y));
                    meanA += valuesA.back() / (windowWidth * windowHeight);
                    meanB += valuesB.back() / (windowWidth * windowHeight);
                }
            }
            total += (2 * meanA * meanB + 6.5025) * (2 * covariance(valuesA, valuesB) + 58.5225) /
                     ((meanA * meanA + meanB * meanB + 6.5025) *
                      (covariance(valuesA, valuesA) + covariance(valuesB, valuesB) + 58.5225));
            ++windows;
        }
    }
    return total / windows;
}

// MARK: Tests

TEST(GaussianBlur, AgreesWithLiteralConvolution) {
    const struct {
        int width, height;
        double sigma, tolerance;
    } cases[] = {
        {13, 9, .8, 1e-4},
        {17, 6, 3.7, 1e-4},
        {7, 5, 6, 1e-4},  // the kernel covers several mirror images
        {1, 11, 2, 1e-4},
        {90, 60, firstBoxSigma - .01, 1e-4},
        {90, 60, firstBoxSigma, 2e-3},
        {60, 90, 30.7, 2e-3},
        {24, 40, 122.6, 2e-3},
    };
    std::minstd_rand random(7);
    for (const auto& [width, height, sigma, tolerance] : cases) {
        // Both halves differ, so that a shifted or too narrow blur shows.
        Plane plane(static_cast<std::size_t>(width * height));
        for (std::size_t i = 0; i < plane.size(); ++i)
            plane[i] = (i < plane.size() / 3 ? 0.0F : .5F) + static_cast<float>(random() % 1000) / 2000.0F;
        const Literal expected = blurred(Literal(plane.begin(), plane.end()), width, height, sigma);
        const Plane found = gaussianBlur(plane, width, height, sigma);
        double largest = 0;
        for (std::size_t i = 0; i < plane.size(); ++i)
            largest = std::max(largest, std::abs(found[i] - expected[i]));
        EXPECT_LT(largest, tolerance) << width << "x" << height << ", sigma " << sigma;
    }
}

TEST(SpatialCIELAB, FlatColoursDifferByTheirLabDistance) {
    const struct {
        Colour colour;
        double L, a, b;  // published values for sRGB and D65
    } cases[] = {{black, 0, 0, 0},
                 {white, 100, 0, 0},
                 {red, 53.24, 80.09, 67.20},
                 {green, 87.73, -86.18, 83.18},
                 {blue, 32.30, 79.19, -107.86},
                 {{119, 119, 119}, 50.03, 0, 0}};
    for (const auto& one : cases) {
        for (const auto& other : cases) {
            const double expected = std::hypot(one.L - other.L, one.a - other.a, one.b - other.b);
            for (const double pixelsPerDegree : {20, 40}) {
                EXPECT_NEAR(spatialColourDifference(flat(one.colour).view(), flat(other.colour).view(),
                                                    pixelsPerDegree),
                            expected, .03);
            }
        }
    }
}

TEST(SpatialCIELAB, AgreesWithLiteralComputation) {
    // Saturated dots in the dark, where the blurred planes add up to less than no light.
    Image dots = flat(black, 40, 24);
    for (int i = 0; i < 40 * 24; i += 17)
        dots.pixel(i % 40, i / 40)[i % 2] = 255;
    // An edge between white and green in a wide picture, which shows the spread of the widest blurs.
    Image edge = flat({60, 60, 60}, 300, 2);
    Image turned = flat({60, 60, 60}, 300, 2);
    for (int x = 0; x < 150; ++x) {
        for (int y = 0; y < 2; ++y) {
            std::ranges::copy(white, edge.pixel(x, y));
            std::ranges::copy(green, turned.pixel(299 - x, y));
        }
    }
    Image bluish = flat(blue, 40, 2);
    for (int x = 0; x < 20; ++x)
        std::ranges::copy(Colour{255, 255, 0}, bluish.pixel(x, 0));
    const struct {
        Image film, movie;
    } cases[] = {{bluish, flat({160, 160, 160}, 40, 2)},
                 {noise(23, 15, 1), noise(23, 15, 2, 2)},
                 {edge, turned},
                 {edge, flat(white, 300, 2)},
                 {noise(40, 24, 3, 8), flat({90, 70, 50}, 40, 24)},
                 {flat({25, 25, 25}, 40, 24), dots}};
    for (const auto& [film, movie] : cases) {
        for (const double pixelsPerDegree : {20, 40}) {
            const double expected = literalDifference(film, movie, pixelsPerDegree);
            const double found = spatialColourDifference(film.view(), movie.view(), pixelsPerDegree);
            EXPECT_NEAR(found, expected, .001 * expected);
        }
    }
}

TEST(Measures, EqualPicturesHaveNoDifference) {
    for (const Image& image : {noise(16, 16, 5), noise(3, 20, 6), noise(1, 1, 7)}) {
        EXPECT_EQ(spatialColourDifference(image.view(), image.view(), 40), 0);
        EXPECT_EQ(structuralSimilarity(image.view(), image.view()), 1);
        EXPECT_EQ(peakSignalRatio(meanSquaredError(image.view(), image.view())), INFINITY);
        EXPECT_EQ(blurredMeanSquaredError(image.view(), image.view()), 0);
        EXPECT_NEAR(keptDetail(image.view(), image.view()).value_or(1), 1, 1e-9);
    }
}

TEST(Measures, IgnoreAlpha) {
    const Image film = noise(16, 12, 1), movie = noise(16, 12, 2);
    Image other = movie;
    for (std::size_t i = 3; i < other.bytes.size(); i += 4)
        other.bytes[i] ^= 0x5A;
    EXPECT_EQ(meanSquaredError(film.view(), movie.view()), meanSquaredError(film.view(), other.view()));
    Image next = film;
    next.bytes[0] ^= 1;
    next.bytes[7] ^= 0xFF;
    EXPECT_EQ(flicker({film.view(), next.view()}, {movie.view(), other.view()}), 0);
}

TEST(Detail, AgreesWithLiteralCorrelation) {
    const Image film = noise(31, 22, 11);
    Image movie = film;
    for (std::uint8_t& byte : movie.bytes)
        byte = byte < 128 ? 0 : 255;
    const Literal a = literalDetail(film), b = literalDetail(movie);
    const double expected = covariance(a, b) / std::sqrt(covariance(a, a) * covariance(b, b));
    EXPECT_GT(expected, .5);
    EXPECT_NEAR(keptDetail(film.view(), movie.view()).value(), expected, 1e-3);
}

TEST(Detail, FlatPicturesHaveNone) {
    const Image detailed = noise(20, 20, 3);
    for (const Colour& colour : {black, Colour{3, 200, 77}, white}) {
        const Image plain = flat(colour, 20, 20);
        EXPECT_EQ(keptDetail(plain.view(), detailed.view()), std::nullopt);
        EXPECT_EQ(keptDetail(detailed.view(), plain.view()), 0);
    }
    // One step of 255 in one pixel is detail.
    Image nearlyFlat = flat(white, 20, 20);
    nearlyFlat.pixel(7, 7)[1] = 254;
    EXPECT_NEAR(keptDetail(nearlyFlat.view(), nearlyFlat.view()).value_or(0), 1, 1e-9);
}

TEST(StructuralSimilarity, AgreesWithLiteralWindows) {
    const struct {
        int width, height, windowWidth, windowHeight;
    } cases[] = {{19, 11, 8, 8}, {8, 8, 8, 8}, {5, 30, 5, 8}, {9, 2, 8, 2}};
    for (const auto& [width, height, windowWidth, windowHeight] : cases) {
        const Image film = noise(width, height, 21), movie = noise(width, height, 22, 3);
        EXPECT_NEAR(structuralSimilarity(film.view(), movie.view()),
                    literalSimilarity(film, movie, windowWidth, windowHeight), 1e-9);
    }
}

TEST(SquaredError, FollowsDefinition) {
    const struct {
        Colour film, movie;
        double decibels;
    } cases[] = {{black, white, 0},
                 {black, red, 10 * std::log10(3)},
                 {green, red, 10 * std::log10(1.5)},
                 {{10, 20, 30}, {11, 19, 31}, 20 * std::log10(255)}};
    for (const auto& [film, movie, decibels] : cases)
        EXPECT_NEAR(peakSignalRatio(meanSquaredError(flat(film).view(), flat(movie).view())), decibels, 1e-9);
}

TEST(SquaredError, BlurredErrorIsOfMixedLight) {
    const Image film = noise(18, 14, 31), movie = noise(18, 14, 32, 2);
    double expected = 0;
    for (int channel = 0; channel < 3; ++channel) {
        const auto light = [channel](const Image& image) {
            return blurred(mixed(image, channel == 0, channel == 1, channel == 2), 18, 14, 2);
        };
        const Literal a = light(film), b = light(movie);
        for (std::size_t i = 0; i < a.size(); ++i)
            expected += (a[i] - b[i]) * (a[i] - b[i]) / (3.0 * 18 * 14);
    }
    EXPECT_NEAR(blurredMeanSquaredError(film.view(), movie.view()) / expected, 1, 2e-3);
}

TEST(Flicker, CountsChangedPixelsWhereFilmStandsStill) {
    // Of a row of 200 pixels, the film changes the first `moved` by 3, and the next `nearly` by 2.
    const struct {
        int moved, nearly, changedMoved, changedStill;
        std::optional<double> expected;
    } cases[] = {
        {0, 1, 0, 0, 0},
        {0, 200, 0, 50, .25},
        {100, 50, 100, 30, .3},
        {100, 0, 0, 100, 1},
        {0, 0, 0, 100, std::nullopt},    // the film shows the same picture twice
        {198, 0, 198, 1, .5},            // 1 % is still
        {199, 0, 199, 1, std::nullopt},  // less than 1 % is still
        {200, 0, 200, 0, std::nullopt},
    };
    for (const auto& [moved, nearly, changedMoved, changedStill, expected] : cases) {
        const Image first = flat({100, 100, 100}, 200, 1);
        Image second = first;
        for (int x = 0; x < moved + nearly; ++x)
            second.pixel(x, 0)[x % 3] = static_cast<std::uint8_t>(x < moved ? 103 : x % 2 == 0 ? 98 : 102);
        const Image before = flat(black, 200, 1);
        Image after = before;
        for (int x = 0; x < changedMoved; ++x)
            after.pixel(x, 0)[0] = 255;
        for (int x = moved; x < moved + changedStill; ++x)
            after.pixel(x, 0)[x % 3] = 1;
        const auto found = flicker({first.view(), second.view()}, {before.view(), after.view()});
        EXPECT_EQ(found, expected) << moved << " moved, " << nearly << " nearly still";
    }
}

}  // namespace
}  // namespace zeb
