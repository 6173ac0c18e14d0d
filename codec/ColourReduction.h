#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// Reduces `rgba` (R, G, B, A of 8 bits each; alpha is ignored) to 16-bit pixels (r5 << 11) | (g6 << 5) | b5,
/// low byte first, each channel rounded to the nearest level. `pixels` holds half as many bytes.
void packRGB565(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> pixels);

/// Reduces RGBA pixels to a few levels of brightness, 0 the darkest, by their luminance (ITU-R BT.709 weights
/// on the stored values). Keeps working memory between frames: one thread at a time.
class LuminanceQuantiser {
public:
    /// `colours` levels; below 1 is taken as 1, above 256 as 256.
    explicit LuminanceQuantiser(int colours);

    int colours() const noexcept { return m_colours; }

    /// The nearest level of each pixel, halves upwards. `rgba` holds four bytes for each one of `indices`.
    void quantise(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> indices) const;

    /// The same with error diffusion (Floyd and Steinberg, 1976): rows from the top, each from left to right.
    /// `rgba` holds width x height pixels, `indices` as many bytes.
    void dither(std::span<const std::uint8_t> rgba, int width, int height, std::span<std::uint8_t> indices);

private:
    int m_colours;
    std::vector<double> m_thresholds;  ///< of levels 1, 2 ...: the smallest value that is rounded up to it
    std::vector<std::int64_t> m_valueSteps;  ///< of level values' bits, from one to the next
    std::vector<double> m_errors;            ///< of the row above the one that is dithered next
};

}  // namespace zeb
