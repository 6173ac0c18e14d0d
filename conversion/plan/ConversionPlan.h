#pragma once

#include <cstdint>
#include <string>

#include "conversion/look/FrameGeometry.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"
#include "media/Media.h"

namespace zeb {

/// Properties of a conversion, derived from source and settings before the first frame.
struct ConversionPlan {
    SourceInfo source;             ///< displayed size at least 1 x 1
    FrameSize size;                ///< of the file's frames
    int fps = 1;                   ///< of the file
    double duration = 0;           ///< duration of the converted part of the source in seconds, not negative
    std::int64_t seconds = 1;      ///< one-second blocks
    std::int64_t totalFrames = 1;  ///< seconds x fps
    std::int64_t firstFrame = 0;   ///< number of the first frame, counted from the start of the source

    bool operator==(const ConversionPlan&) const = default;
};

/// Throws `SettingsError` if settings contradict each other.
void checkSettings(const Settings& settings);

/// Derives the plan for a source with pictures. The movie lasts as long as the pictures, or as the included
/// sound if that is longer by more than 0.1 s (less is padding of the sound codec). A time range starts and
/// ends at the nearest frames. Throws `MediaError` if a number does not fit its integer type, and
/// `SettingsError` if the settings contradict each other, the picture or the length of the source.
ConversionPlan planConversion(const MediaAsset& asset, const Settings& settings);

/// Returns a warning if the pictures, or else the included sound, end within the converted part, before the
/// end stated by the source; otherwise empty.
std::string breakOffWarning(const MediaAsset& asset, const Settings& settings, const ConversionPlan& plan);

/// Returns the number of sound samples before the first frame and in the converted part. The rate is that of
/// the movie.
std::int64_t firstSample(const ConversionPlan& plan);
std::int64_t sampleCount(const Settings& settings, const ConversionPlan& plan);

/// Returns the times at which the frames of a plan are grabbed: frame i at (firstFrame + i) / fps seconds,
/// but at the latest 1/600 s before the end.
GrabSchedule grabSchedule(const ConversionPlan& plan);

}  // namespace zeb
