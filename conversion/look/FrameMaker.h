#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "codec/SpriteEncoder.h"
#include "conversion/look/FrameRecipe.h"
#include "platform/base/Picture.h"

namespace zeb {

/// A recipe and the tables made from it. Immutable; shared by the frame makers of all threads.
class FrameTools {
public:
    explicit FrameTools(const FrameRecipe& recipe);

    const FrameRecipe& recipe() const { return m_recipe; }
    const ColourAdjustment& adjustment() const { return m_adjustment; }
    /// Null without a natural reduction.
    const std::shared_ptr<const NaturalTable>& naturalTable() const { return m_naturalTable; }

private:
    FrameRecipe m_recipe;
    ColourAdjustment m_adjustment;
    std::shared_ptr<const NaturalTable> m_naturalTable;
};

/// Draws a picture in the shape of the frames, in sRGB and without adjustments. `rgba` holds 4 bytes per
/// pixel of `geometry.size`. Callable from any thread. Throws the errors of the drawing.
void drawInShape(const Picture& picture, const FrameGeometry& geometry, const RGBColour& padColour,
                 std::span<std::uint8_t> rgba);

/// Makes the frames of a movie from the pictures of a film, for conversions, forecasts and previews. Equal
/// pictures give equal frames, independent of earlier calls. Keeps working buffers: each thread uses a
/// separate frame maker.
///
/// Each operation throws the errors of the drawing and of `SpriteEncoder`.
class FrameMaker {
public:
    explicit FrameMaker(std::shared_ptr<const FrameTools> tools);

    /// Returns the record of a picture.
    std::vector<std::uint8_t> record(const Picture& picture);

    /// Returns the picture in the shape of the frames, in sRGB and without adjustments: R, G, B, A of 8 bits
    /// each, rows from the top. Valid until the next call.
    std::span<const std::uint8_t> original(const Picture& picture);

private:
    std::shared_ptr<const FrameTools> m_tools;
    SpriteEncoder m_encoder;
    std::optional<NaturalReduction> m_natural;
    std::vector<std::uint8_t> m_part;    ///< drawn picture that does not fill the frame
    std::vector<std::uint8_t> m_pixels;  ///< reduced frame
};

}  // namespace zeb
