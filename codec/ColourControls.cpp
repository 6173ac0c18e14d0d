#include "codec/ColourControls.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <cstddef>

#include "codec/ExactMath.h"

namespace zeb {

namespace {

/// Applies all controls but the saturation to one channel. The result may be outside 0 ... 1. The forms of
/// the sums keep each bit of the value if the controls are the identity.
double adjustedChannel(const ColourControls& controls, double value) {
    assert(controls.white > controls.black && controls.gamma > 0);
    const double level = std::clamp((value - controls.black) / (controls.white - controls.black), 0.0, 1.0);
    const double curved = controls.gamma == 1 ? level : power(level, 1 / controls.gamma);
    return curved * controls.contrast + (0.5 - 0.5 * controls.contrast + controls.brightness);
}

}  // namespace

std::array<double, 3> adjusted(const ColourControls& controls, std::array<double, 3> rgb) {
    for (double& channel : rgb)
        channel = adjustedChannel(controls, channel);
    const double luma = 0.299 * rgb[0] + 0.587 * rgb[1] + 0.114 * rgb[2];
    for (double& channel : rgb)
        channel = std::clamp(channel * controls.saturation + luma * (1 - controls.saturation), 0.0, 1.0);
    return rgb;
}

ColourAdjustment::ColourAdjustment(const ColourControls& controls)
    : m_isIdentity(controls == ColourControls{}),
      m_values{},
      m_saturation(static_cast<std::int32_t>(std::floor(controls.saturation * 4096 + 0.5))) {
    for (std::size_t i = 0; i < m_values.size(); ++i) {
        const double value = adjustedChannel(controls, static_cast<double>(i) / 255);
        m_values[i] = static_cast<std::int32_t>(std::floor(value * 255 * 256 + 0.5));
    }
}

void ColourAdjustment::apply(std::span<std::uint8_t> rgba) const {
    assert(rgba.size() % 4 == 0);
    if (m_isIdentity) return;
    for (std::size_t i = 0; i < rgba.size(); i += 4) {
        const std::int32_t red = m_values[rgba[i]];
        const std::int32_t green = m_values[rgba[i + 1]];
        const std::int32_t blue = m_values[rgba[i + 2]];
        // Values are within -1 ... 2 times 65280, so that all products fit 32 bits.
        const std::int32_t luma = (4899 * red + 9617 * green + 1868 * blue + 8192) >> 14;
        const auto saturated = [&](std::int32_t value) {
            const std::int32_t exact = luma + (((value - luma) * m_saturation + 2048) >> 12);
            return static_cast<std::uint8_t>(std::clamp((exact + 128) >> 8, 0, 255));
        };
        rgba[i] = saturated(red);
        rgba[i + 1] = saturated(green);
        rgba[i + 2] = saturated(blue);
    }
}

}  // namespace zeb
