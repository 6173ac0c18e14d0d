#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace zeb {

/// Adjusts encoded values (0 ... 1), in this order: levels, gamma, contrast and brightness, saturation.
struct ColourControls {
    double black = 0;       ///< encoded value that becomes 0
    double white = 1;       ///< encoded value that becomes 1; more than `black`
    double gamma = 1;       ///< 0.2 ... 5; more than 1 lightens
    double contrast = 1;    ///< 0 ... 2; around the middle grey
    double brightness = 0;  ///< -0.5 ... 0.5
    double saturation = 1;  ///< 0 ... 2; around the luma (ITU-R BT.601 weights)

    bool operator==(const ColourControls&) const = default;
};

/// Returns the adjusted colour, each channel in 0 ... 1. Identity controls change no bit of a colour in this
/// range. The same bits on every processor.
std::array<double, 3> adjusted(const ColourControls& controls, std::array<double, 3> rgb);

/// The adjustment of pictures of 8 bits. Immutable, may be shared by threads.
class ColourAdjustment {
public:
    explicit ColourAdjustment(const ColourControls& controls);

    /// Returns whether the controls change nothing.
    bool isIdentity() const noexcept { return m_isIdentity; }

    /// Adjusts R, G and B of each pixel in place, in integers; alpha is kept. The result is less than 0.52
    /// levels away from `adjusted`. `rgba` has four bytes per pixel.
    void apply(std::span<std::uint8_t> rgba) const;

private:
    bool m_isIdentity;
    std::array<std::int32_t, 256>
        m_values;               ///< each channel value before the saturation, in 1/256 of a level
    std::int32_t m_saturation;  ///< in 1/4096
};

}  // namespace zeb
