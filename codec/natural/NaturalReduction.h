#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "codec/natural/NaturalTable.h"

namespace zeb {

enum class NaturalDithering {
    ordered,  ///< a fixed mask: a pixel depends on its neighbourhood of 9 x 9 pixels
    fine,     ///< then neighbours exchange their colours where that shows the picture better
};

/// Reduces pictures to black, red, green and white so that the blurred result looks like the picture. Keeps
/// working buffers; one per thread. Equal pictures give equal indices, independent of earlier calls, threads
/// and processors.
class NaturalReduction {
public:
    /// `sharpness` is in percent, 0 ... 200.
    NaturalReduction(std::shared_ptr<const NaturalTable> table, NaturalDithering dithering, int sharpness);
    ~NaturalReduction();
    NaturalReduction(NaturalReduction&&) noexcept;
    NaturalReduction& operator=(NaturalReduction&&) noexcept;

    /// Reduces width x height pixels (R, G, B, A of 8 bits each in sRGB; alpha is ignored). Both sides are at
    /// least 1. `indices` has one byte per pixel: 0 black, 1 red, 2 green, 3 white.
    void reduce(std::span<const std::uint8_t> rgba, int width, int height, std::span<std::uint8_t> indices);

private:
    struct Steps;
    std::unique_ptr<Steps> m_steps;
};

}  // namespace zeb
