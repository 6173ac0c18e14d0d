#pragma once

namespace zeb {

// Functions of the standard library may differ in the last bits from one library to the next. These consist
// of additions, multiplications and divisions only, which IEEE 754 defines: the results are the same bits
// everywhere. The relative error is below 1e-14.

/// Returns the cube root of `value`, which is finite and not negative.
double cubeRoot(double value);

/// Returns `base` to the power of `exponent`. `base` is finite and not negative, `exponent` finite and more
/// than 0, the result at most 1e300.
double power(double base, double exponent);

}  // namespace zeb
