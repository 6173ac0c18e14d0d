#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace zeb::natural {

/// Sharpens pictures by the difference between the luma and the blurred luma, in steps of 1/256 of a level.
/// Differences of up to two levels are noise and are not amplified. Keeps working buffers; one per thread.
class Sharpening {
public:
    /// `strength` is the factor of the differences in 1/256, at most 4096.
    explicit Sharpening(int strength) : m_strength(strength) {}

    /// Reads the picture, width x height RGBA pixels.
    void setPicture(std::span<const std::uint8_t> rgba, int width, int height);

    /// Returns the amounts to add to R, G and B of each pixel in this row, valid until the next call.
    std::span<const std::int32_t> row(int y);

private:
    int m_strength;
    std::size_t m_width = 0;
    std::size_t m_height = 0;
    std::vector<std::int32_t> m_luma;     ///< with repeated edges left and right
    std::vector<std::int32_t> m_blurred;  ///< the luma blurred along rows, times 16
    std::vector<std::int32_t> m_amounts;
};

}  // namespace zeb::natural
