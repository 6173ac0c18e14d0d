#include "conversion/look/FrameRecipe.h"

#include "conversion/plan/ConversionPlan.h"

namespace zeb {
namespace {

Reduction reductionFor(const Settings& settings) {
    using Dithering = Colours::Dithering;
    const std::optional<Dithering>& dithering = settings.colours.dithering;
    if (settings.qlModeNumber == 32)
        return dithering == Dithering::rows ? Reduction::rows : Reduction::nearest;
    if (settings.colours.kind == Colours::Kind::natural)
        return dithering == Dithering::fine ? Reduction::naturalFine : Reduction::naturalOrdered;
    const bool diffuses = dithering ? *dithering == Dithering::diffusion : settings.dither;
    return diffuses ? Reduction::diffusedLevels : Reduction::levels;
}

ColourControls controlsFor(const Look& look) {
    ColourControls controls;
    controls.black = look.black;
    controls.white = look.white;
    controls.gamma = look.gamma;
    controls.contrast = 1 + look.contrast / 100.0;
    controls.brightness = look.brightness / 200.0;
    controls.saturation = look.saturation / 100.0;
    return controls;
}

}  // namespace

FrameRecipe frameRecipe(int sourceWidth, int sourceHeight, const Settings& settings) {
    checkSettings(settings);
    FrameRecipe recipe;
    recipe.geometry = frameGeometry(sourceWidth, sourceHeight, settings);
    recipe.padColour = settings.shape.padColour;
    recipe.reduction = reductionFor(settings);
    const ColourControls controls = controlsFor(settings.look);
    if (settings.colours.kind == Colours::Kind::natural) {
        recipe.natural = {settings.colours.tone, settings.colours.toe, controls};
        recipe.sharpness = settings.colours.sharpen;
    } else {
        recipe.controls = controls;
    }
    return recipe;
}

}  // namespace zeb
