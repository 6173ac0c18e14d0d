#pragma once

#include "conversion/plan/Settings.h"
#include "platform/base/Picture.h"

namespace zeb {

/// A frame size in pixels.
struct FrameSize {
    int width = 0;
    int height = 0;

    bool operator==(const FrameSize&) const = default;
};

/// Positions of a film's picture in the frames of a movie.
struct FrameGeometry {
    FrameSize size;       ///< of the frames
    PixelRectangle area;  ///< of the picture in the frame; the rest is filled
    Framing framing;      ///< of the picture

    bool operator==(const FrameGeometry&) const = default;
};

/// Returns the frame size: with the aspect ratio of the source if requested, never larger than the source,
/// each side a multiple of 8 within 64 ... 4096.
FrameSize targetSize(int sourceWidth, int sourceHeight, const Settings& settings);

/// Returns the size of a source in pixels of the movie's screen: cropped, rotated, and with one side reduced
/// for pixels that are not square.
FrameSize sourceOnScreen(int sourceWidth, int sourceHeight, const Settings& settings);

/// Returns the geometry for a source of this displayed size. Automatic cropping counts as none. Throws
/// `SettingsError` if the cropped part is not inside the picture.
FrameGeometry frameGeometry(int sourceWidth, int sourceHeight, const Settings& settings);

}  // namespace zeb
