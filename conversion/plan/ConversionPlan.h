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

/// What a run makes of a source under given settings, fixed before the first frame.
struct ConversionPlan {
    SourceInfo source;             ///< displayed size at least 1 x 1
    FrameSize size;                ///< of the file's frames
    int fps = 1;                   ///< of the file
    double duration = 0;           ///< of what the movie carries of the source, in seconds, not negative
    std::int64_t seconds = 1;      ///< one-second blocks
    std::int64_t totalFrames = 1;  ///< seconds x fps

    bool operator==(const ConversionPlan&) const = default;
};

/// The size of the frames: the source's aspect kept if asked for, never larger than the source, each side a
/// multiple of 8 within 64 ... 4096.
FrameSize targetSize(int sourceWidth, int sourceHeight, const Settings& settings);

/// Derives the whole plan for a source that has pictures. The movie lasts as long as the pictures, or as the
/// sound if it is included and outlasts them by more than 0.1 s: less is a sound coder's padding. Throws
/// `MediaError` when a figure does not fit its integer type.
ConversionPlan planConversion(const MediaAsset& asset, const Settings& settings);

/// A line that warns of pictures, else of included sound, that end before the end which the source states;
/// empty when there is nothing to warn of.
std::string breakOffWarning(const MediaAsset& asset, const Settings& settings);

/// When the frames of a plan are grabbed: frame i at i / fps seconds, but no later than 1/600 s before the
/// end.
GrabSchedule grabSchedule(const ConversionPlan& plan);

}  // namespace zeb
