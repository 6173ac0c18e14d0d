#pragma once

#include <compare>
#include <string>

namespace zeb {

/// The requested settings of a conversion.
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

    bool operator==(const Settings&) const = default;
};

}  // namespace zeb
