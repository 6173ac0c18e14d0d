#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "codec/ColourControls.h"

namespace zeb {

/// Settings of the natural colours that do not depend on the picture.
struct NaturalParameters {
    double tone = 1.6;  ///< 1 ... 3; lift of dark tones, 1 = none
    double toe = 0.16;  ///< 0 ... 0.25; cube root of the luminance below which all is black, 0 = off
    ColourControls controls;

    bool operator==(const NaturalParameters&) const = default;
};

/// Maps encoded sRGB colours to mixes of black, red, green and white in linear light, as a grid of 33 x 33 x
/// 33 nodes. Node i of an axis stands for the encoded value i / 32. Immutable, may be shared by threads. The
/// same bits on every processor.
class NaturalTable {
public:
    explicit NaturalTable(const NaturalParameters& parameters);

    /// Returns the node's thresholds: the shares of 16384 of black, of black and red, of black, red and
    /// green, in bits 0-15, 16-31 and 32-47. The other bits are 0. The order of nodes is (red x 33 + green) x
    /// 33 + blue.
    std::span<const std::uint64_t> nodes() const noexcept { return m_nodes; }

private:
    std::vector<std::uint64_t> m_nodes;
};

}  // namespace zeb
