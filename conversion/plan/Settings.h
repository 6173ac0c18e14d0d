#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <optional>
#include <string>

#include "conversion/plan/TimeRange.h"

namespace zeb {

/// A rectangle in displayed pixels of a film: upright, sample aspect ratio applied.
struct PixelRectangle {
    int x = 0;
    int y = 0;
    int width = 0;
    int height = 0;

    bool operator==(const PixelRectangle&) const = default;
};

/// R, G, B of 8 bits, sRGB.
using RGBColour = std::array<std::uint8_t, 3>;

/// The shape of a pixel on the screen of the movie.
struct PixelShape {
    int width = 1;
    int height = 1;

    double aspect() const { return static_cast<double>(width) / height; }
    bool operator==(const PixelShape&) const = default;
};

/// The shape of the frames. The film's picture is cropped first, then rotated, then flipped, then fitted.
struct Shape {
    enum class Crop { none, automatic, rectangle };
    enum class Fit {
        scale,  ///< the frame takes the picture's aspect ratio, and is never larger than the picture
        pad,    ///< the frame has the requested size; the picture is fitted into it, the rest is filled
        fill,   ///< the frame has the requested size; the picture covers it, and its edges are cut off
    };

    Crop crop = Crop::none;  ///< automatic: black bars at the edges
    PixelRectangle part;     ///< for a rectangle
    Fit fit = Fit::scale;    ///< scale stretches without `Settings::preserveAspect`
    RGBColour padColour{};
    PixelShape pixelShape;
    int rotation = 0;   ///< clockwise, in degrees: 0, 90, 180, 270
    bool flip = false;  ///< left and right exchanged

    bool operator==(const Shape&) const = default;
};

/// Adjustments of the scaled picture before its colours are reduced.
struct Look {
    int brightness = 0;    ///< -100 ... 100
    int contrast = 0;      ///< -100 ... 100
    int saturation = 100;  ///< percent, 0 ... 200
    double gamma = 1;      ///< 0.2 ... 5
    bool autoLevels = false;
    // Found by automatic levels: the values, from 0 to 1, that become black and white.
    double black = 0;
    double white = 1;

    bool operator==(const Look&) const = default;
};

/// The colours of the movie's pixels.
struct Colours {
    enum class Kind {
        levels,   ///< Mode 4: steps of brightness; Mode 32: the nearest colours
        natural,  ///< Mode 4: mixes of the four colours that look like the film
    };
    enum class Dithering {
        none,
        diffusion,  ///< levels in Mode 4
        ordered,    ///< natural colours
        fine,       ///< natural colours
        rows,       ///< Mode 32
    };

    Kind kind = Kind::levels;
    std::optional<Dithering> dithering;  ///< empty: ordered for natural colours, else by `Settings::dither`
    // Of natural colours:
    double tone = 1.6;  ///< lift of dark tones, 1 ... 3
    double toe = 0.16;  ///< cube root of the luminance that becomes black, 0 ... 0.25
    int sharpen = 100;  ///< percent, 0 ... 200

    bool operator==(const Colours&) const = default;
};

/// The requested settings of a conversion. The defaults of the groups change nothing.
struct Settings {
    std::string title = "Untitled";  ///< UTF-8
    int width = 512;                 ///< requested frame width in pixels; the plan derives the actual width
    int height = 256;
    bool preserveAspect = true;  ///< fit the source's aspect ratio into width x height
    int fps = 10;                ///< requested frames per second, an upper limit
    bool fpsFromSource = true;   ///< let the analysis of the source propose the frame rate
    bool loop = false;           ///< written as the file's loop option
    bool includeAudio = true;
    int audioTrackIndex = 0;  ///< among the source's sound tracks, from 0
    int audioChannels = 2;    ///< 1 = mono, 2 = stereo, 0 = none
    bool dither = false;      ///< error diffusion, Mode 4 only
    int qlModeNumber = 32;    ///< 32 = Mode 32; any other value is encoded as Mode 4
    Shape shape{};
    Look look{};
    Colours colours{};
    TimeRange time{};

    bool operator==(const Settings&) const = default;
};

}  // namespace zeb
