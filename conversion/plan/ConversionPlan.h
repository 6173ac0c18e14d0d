#pragma once

#include <cstdint>
#include <string>

#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"
#include "media/Media.h"

namespace zeb {

/// A frame size in pixels.
struct FrameSize {
    int width = 0;
    int height = 0;

    bool operator==(const FrameSize&) const = default;
};

/// Properties of a conversion, derived from source and settings before the first frame.
struct ConversionPlan {
    SourceInfo source;             ///< displayed size at least 1 x 1
    FrameSize size;                ///< of the file's frames
    int fps = 1;                   ///< of the file
    double duration = 0;           ///< duration of the converted part of the source in seconds, not negative
    std::int64_t seconds = 1;      ///< one-second blocks
    std::int64_t totalFrames = 1;  ///< seconds x fps

    bool operator==(const ConversionPlan&) const = default;
};

/// Returns the frame size: with the aspect ratio of the source if requested, never larger than the source,
/// each side a multiple of 8 within 64 ... 4096.
FrameSize targetSize(int sourceWidth, int sourceHeight, const Settings& settings);

/// Derives the plan for a source with pictures. The movie lasts as long as the pictures, or as the included
/// sound if that is longer by more than 0.1 s (less is padding of the sound codec). Throws `MediaError` if a
/// number does not fit its integer type.
ConversionPlan planConversion(const MediaAsset& asset, const Settings& settings);

/// Returns a warning if the pictures, or else the included sound, end before the end stated by the source;
/// otherwise empty.
std::string breakOffWarning(const MediaAsset& asset, const Settings& settings);

/// Returns the times at which the frames of a plan are grabbed: frame i at i / fps seconds, but at the latest
/// 1/600 s before the end.
GrabSchedule grabSchedule(const ConversionPlan& plan);

}  // namespace zeb
