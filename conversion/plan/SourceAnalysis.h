#pragma once

#include <string>

#include "media/Media.h"

namespace zeb {

/// Analysis result for the pictures of a source.
struct SourceInfo {
    int width = 0;  ///< displayed size in pixels
    int height = 0;
    int fps = 0;  ///< nominal frame rate, rounded; 25 when unknown

    bool operator==(const SourceInfo&) const = default;
};

/// Returns size and rate of the first video track of a source. Throws `MediaError` if a number does not fit
/// an integer.
SourceInfo sourceInfo(const VideoTrack& track);

/// Returns the title proposed for a source: its file name without the extension.
std::string proposedTitle(const std::string& path);

/// Returns the frame side proposed for a source side: rounded down to a multiple of 8, within 64 ... 4096.
int proposedSide(int sourceSide);

/// Returns the frame rate proposed for a source rate: clamped to 1 ... 60.
int proposedRate(int sourceRate);

}  // namespace zeb
