#pragma once

#include <string>

#include "media/Media.h"

namespace zeb {

/// What the analysis finds out about a source's pictures.
struct SourceInfo {
    int width = 0;  ///< displayed size in pixels
    int height = 0;
    int fps = 0;  ///< nominal frame rate, rounded; 25 when unknown

    bool operator==(const SourceInfo&) const = default;
};

/// Size and rate of a source's first video track. Throws `MediaError` when a figure does not fit an integer.
SourceInfo sourceInfo(const VideoTrack& track);

/// The title proposed for a source: its file name without the extension.
std::string proposedTitle(const std::string& path);

/// The side length proposed for a source's side: rounded down to a multiple of 8, within 64 ... 4096.
int proposedSide(int sourceSide);

/// The frame rate proposed for a source's: within 1 ... 60.
int proposedRate(int sourceRate);

}  // namespace zeb
