#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <vector>

#include "media/drawing/ColourDescription.h"

namespace zeb::ffmpeg {

/// Converts RGB values of a stream to sRGB. Immutable; may be used by several threads at once.
///
/// If the stream has sRGB's primaries and a standard dynamic range, each component is converted by a table.
/// Otherwise light is computed per pixel: gamut by matrix and clipping, brightness above a display's white by
/// the tone mapping of ITU-R BT.2390.
class ColourConversion {
public:
    /// Bits per input component, full range.
    static constexpr int bits = 12;
    static constexpr int levels = 1 << bits;

    explicit ColourConversion(const ColourDescription& colour);

    /// Converts one row. `red`, `green` and `blue` hold one component each. `rgba` receives 4 bytes per
    /// pixel, R, G, B and 255, the first at `rgba`, the others `step` bytes apart (negative or larger than 4
    /// for rotated pictures).
    void convertRow(const std::uint16_t* red, const std::uint16_t* green, const std::uint16_t* blue,
                    int count, std::uint8_t* rgba, std::ptrdiff_t step) const;

private:
    void convertThroughLight(const std::uint16_t* red, const std::uint16_t* green, const std::uint16_t* blue,
                             int count, std::uint8_t* rgba, std::ptrdiff_t step) const;

    bool m_isTable;
    bool m_isHLG;
    std::array<std::uint8_t, levels> m_table{};  ///< component to sRGB, for conversion by table only
    std::vector<float> m_light;                  ///< component to light; 1 = a display's white
    std::array<float, 9> m_gamut{};    ///< light in the stream's primaries to light in sRGB's, by rows
    std::vector<float> m_systemGamma;  ///< HLG: square root of scene luminance to the factor of its light
    std::vector<float> m_toneScale;    ///< fourth root of the largest component to the factor of all three
    float m_largestLight = 1;
    std::vector<std::uint8_t> m_encode;  ///< square root of light 0 ... 1 to sRGB
};

}  // namespace zeb::ffmpeg
