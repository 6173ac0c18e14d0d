#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zeb {

/// Reduces `rgba` (R, G, B, A of 8 bits each; alpha is ignored) to 16-bit pixels (r5 << 11) | (g6 << 5) | b5,
/// low byte first. Each channel is rounded to the nearest level. `pixels` has half the length of `rgba`.
void packRGB565(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> pixels);

/// Reduces like `packRGB565`, but with another threshold in each of eight rows, so that even gradients show
/// no bands: channel c becomes floor(c * 31 / 255 + (v[y % 8] + 0.5) / 8), green with 63 instead of 31, where
/// y is the row and v = 0 4 2 6 1 5 3 7. Rows stay as even as the picture for the run-length code. `rgba`
/// holds whole rows of `width` pixels.
void packRGB565Rows(std::span<const std::uint8_t> rgba, int width, std::span<std::uint8_t> pixels);

/// Reduces RGBA pixels to a few levels of brightness, 0 the darkest, by their luminance (ITU-R BT.709 weights
/// on the stored values). Keeps working memory between frames. Used by one thread at a time.
class LuminanceQuantiser {
public:
    /// `colours` is the number of levels, limited to 1 ... 256.
    explicit LuminanceQuantiser(int colours);

    int colours() const noexcept { return m_colours; }

    /// Writes the nearest level of each pixel to `indices`, halves rounded up. `rgba` has four bytes per
    /// index.
    void quantise(std::span<const std::uint8_t> rgba, std::span<std::uint8_t> indices) const;

    /// Quantises with error diffusion (Floyd and Steinberg, 1976): rows from the top, each from left to
    /// right. `rgba` holds width x height pixels, `indices` one byte per pixel.
    void dither(std::span<const std::uint8_t> rgba, int width, int height, std::span<std::uint8_t> indices);

private:
    int m_colours;
    std::vector<double> m_thresholds;        ///< smallest value that is rounded to level 1, 2 ...
    std::vector<std::int64_t> m_valueSteps;  ///< differences of the bit patterns of successive level values
    std::vector<double> m_errors;            ///< errors from the row above the next dithered row
};

}  // namespace zeb
