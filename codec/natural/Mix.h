#pragma once

#include <array>

#include "codec/ExactMath.h"

/// Colours in linear light and their mixes of black, red, green and white, the corners of a tetrahedron.
namespace zeb::natural {

using Colour = std::array<double, 3>;  ///< red, green, blue; linear light, 0 ... 1
using Mix = std::array<double, 4>;     ///< shares of black, red, green and white; their sum is 1

/// Returns the linear light of an encoded value of sRGB (IEC 61966-2-1).
inline double linearLight(double encoded) {
    return encoded <= 0.04045 ? encoded / 12.92 : power((encoded + 0.055) / 1.055, 2.4);
}

/// Returns the only mix that gives this colour. A share is negative if no mix of the four colours does.
inline Mix mixOf(const Colour& colour) {
    const auto& [red, green, blue] = colour;
    return {1 - red - green + blue, red - blue, green - blue, blue};
}

inline Colour colourOf(const Mix& mix) {
    const auto& [black, red, green, white] = mix;
    return {red + white, green + white, white};
}

inline bool isReachable(const Mix& mix) {
    for (const double share : mix)
        if (share < 0) return false;
    return true;
}

/// Cuts shares to 0 ... 1 and makes their sum 1.
inline Mix normalised(Mix mix) {
    double sum = 0;
    for (double& share : mix) {
        share = share < 0 ? 0 : share > 1 ? 1 : share;
        sum += share;
    }
    for (double& share : mix)
        share /= sum;
    return mix;
}

}  // namespace zeb::natural
