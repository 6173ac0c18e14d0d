#include "conversion/plan/SourceAnalysis.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

#include "platform/text/PathName.h"

namespace zeb {

namespace {

/// Rounds to the nearest integer, halves away from zero.
int roundedToInt(double value, const char* errorKey) {
    const double rounded = std::round(value);
    if (!(std::abs(rounded) <= std::numeric_limits<int>::max())) {
        throw MediaError(MediaError::cannotDecode, {errorKey});
    }
    return static_cast<int>(rounded);
}

}  // namespace

SourceInfo sourceInfo(const VideoTrack& track) {
    constexpr int unknownRate = 25;
    const MediaSize upright = track.preferredTransform.apply(track.naturalSize);
    SourceInfo info;
    info.width = roundedToInt(std::abs(upright.width), "error_source_width");
    info.height = roundedToInt(std::abs(upright.height), "error_source_height");
    info.fps = roundedToInt(track.nominalFrameRate, "error_source_rate");
    if (info.fps < 1) info.fps = unknownRate;
    return info;
}

std::string proposedTitle(const std::string& path) {
    return std::string(nameWithoutExtension(path));
}

int proposedSide(int sourceSide) {
    constexpr int smallest = 64;
    constexpr int largest = 4096;
    if (sourceSide < 1) return smallest;
    return std::clamp(sourceSide / 8 * 8, smallest, largest);
}

int proposedRate(int sourceRate) {
    return std::clamp(sourceRate, 1, 60);
}

}  // namespace zeb
