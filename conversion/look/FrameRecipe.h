#pragma once

#include "codec/ColourControls.h"
#include "codec/natural/NaturalReduction.h"
#include "codec/natural/NaturalTable.h"
#include "conversion/look/FrameGeometry.h"
#include "conversion/plan/Settings.h"

namespace zeb {

/// The reduction of a drawn picture to the pixels of a record.
enum class Reduction {
    levels,          ///< Mode 4: steps of brightness
    diffusedLevels,  ///< Mode 4: the same with error diffusion
    naturalOrdered,  ///< Mode 4: mixes of the four colours by a mask
    naturalFine,     ///< Mode 4: the same, improved by exchanges of neighbours
    nearest,         ///< Mode 32: the nearest colour
    rows,            ///< Mode 32: rounded by a threshold per row
};

/// All parameters that turn a picture of a film into a frame of a movie.
struct FrameRecipe {
    FrameGeometry geometry;
    RGBColour padColour{};
    Reduction reduction = Reduction::nearest;
    ColourControls controls;    ///< for all reductions but the natural ones, whose table contains them
    NaturalParameters natural;  ///< for natural reductions
    int sharpness = 0;          ///< percent, for natural reductions

    bool operator==(const FrameRecipe&) const = default;
};

/// Returns the recipe for a source of this displayed size. Automatic cropping and levels count as none:
/// `settleAutomatic` (FilmAnalysis.h) replaces them first. Throws like `checkSettings` and `frameGeometry`.
FrameRecipe frameRecipe(int sourceWidth, int sourceHeight, const Settings& settings);

}  // namespace zeb
