#include "codec/ExactMath.h"

#include <cassert>
#include <cmath>

namespace zeb {

namespace {

constexpr double ln2 = 0.693147180559945309417;

/// Returns the natural logarithm of a value between the roots of 1/2 and 2: twice the series of atanh.
double logarithm(double value) {
    const double t = (value - 1) / (value + 1);
    double sum = 0;
    for (int divisor = 25; divisor >= 1; divisor -= 2)
        sum = sum * t * t + 1.0 / divisor;
    return 2 * t * sum;
}

/// Returns e to the power of `value` (at most ln2 / 2 from 0) by its Taylor series.
double exponential(double value) {
    double sum = 1;
    for (int n = 16; n >= 1; --n)
        sum = sum * value / n + 1;
    return sum;
}

}  // namespace

double cubeRoot(double value) {
    assert(value >= 0);
    if (value == 0) return 0;
    int exponent = 0;
    double mantissa = std::frexp(value, &exponent);
    int third = exponent / 3;
    if (3 * third < exponent) ++third;
    mantissa = std::ldexp(mantissa, exponent - 3 * third);  // 1/8 ... 1
    // Halley's method: each step triples the number of correct digits, from one.
    double root = 0.45 + 0.58 * mantissa;
    for (int i = 0; i < 3; ++i) {
        const double cube = root * root * root;
        root *= (cube + 2 * mantissa) / (2 * cube + mantissa);
    }
    return std::ldexp(root, third);
}

double power(double base, double exponent) {
    assert(base >= 0 && exponent > 0);
    if (base == 0) return 0;
    int binary = 0;
    double mantissa = std::frexp(base, &binary);
    constexpr double rootOfHalf = 0.70710678118654752440;
    if (mantissa < rootOfHalf) {
        mantissa *= 2;
        --binary;
    }
    // The whole part of the product with the binary exponent is exact, the fraction is added to the rest.
    const double product = exponent * binary;
    const double whole = std::floor(product);
    const double rest = exponent * logarithm(mantissa) + (product - whole) * ln2;
    const double scale = std::floor(rest / ln2 + 0.5);
    return std::ldexp(exponential(rest - scale * ln2), static_cast<int>(whole + scale));
}

}  // namespace zeb
