#pragma once

#include <array>
#include <cstdint>

#include "media/drawing/ColourDescription.h"

namespace zeb::ffmpeg {

/// The components in the planes of a scaled frame.
enum class ComponentFamily { yCbCr, rgb, grey };

/// Converts a frame's 16-bit components to red, green and blue components 0 ... `largest`: reverts the matrix
/// and the range of the signal (ITU-T H.273, 8.3). Immutable.
class MatrixConversion {
public:
    MatrixConversion(const ColourDescription& colour, ComponentFamily family, int largest);

    /// Converts one row. `planes` are Y', Cb and Cr; or red, green and blue; or only Y'. Sets `count` values
    /// of each component.
    void convertRow(const std::array<const std::uint16_t*, 3>& planes, int count, std::uint16_t* red,
                    std::uint16_t* green, std::uint16_t* blue) const;

private:
    ComponentFamily m_family;
    float m_largest;
    float m_lumaOffset = 0,
          m_lumaScale = 1;  ///< of the first plane; of all three for RGB
    float m_chromaOffset = 0;
    float m_redFromCb = 0, m_redFromCr = 0, m_greenFromCb = 0, m_greenFromCr = 0, m_blueFromCb = 0,
          m_blueFromCr = 0;
};

}  // namespace zeb::ffmpeg
