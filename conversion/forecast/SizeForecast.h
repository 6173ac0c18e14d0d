#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "conversion/forecast/RecordSamples.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "media/Media.h"

namespace zeb {

/// The origin of the bytes of a forecast.
enum class ForecastBasis {
    arithmetic,  ///< independent of the pictures
    samples,     ///< computed from encoded sample pictures of the video
    bound,       ///< upper bound
};

/// Changes that would make the movie fit. Each one is enough alone. Empty if no value is small enough.
struct ForecastSuggestion {
    std::optional<int> fps;  ///< the largest frame rate that fits at this size
    /// Width and height settings that give the largest frame size that fits at this rate. Searched in steps
    /// of 8 pixels along the longer side, with the current aspect ratio of the frames.
    std::optional<FrameSize> size;

    bool operator==(const ForecastSuggestion&) const = default;
};

/// The forecast size of the movie of a conversion.
struct SizeForecast {
    ConversionPlan plan;
    std::uint64_t bytes = 0;    ///< of the file
    double bytesPerSecond = 0;  ///< of the movie
    ForecastBasis basis = ForecastBasis::arithmetic;
    /// The file will have exactly this size, whatever the pictures and the sound contain.
    bool isExact = false;

    int samples = 0;  ///< pictures that were encoded
    /// For samples: the relative standard error of their mean. Empty with a single picture.
    std::optional<double> uncertainty;

    /// The first second of the movie, from 0, that does not fit into the 4 GiB of the format. The conversion
    /// would end there with `ZEBWriterError`. Empty if all fit.
    std::optional<std::int64_t> formatEndsAt;
    /// Free space for the output in bytes. Empty if unknown.
    std::optional<std::uint64_t> freeSpace;
    /// The first second of the movie that exceeds the free space. Empty if there is none or the space is
    /// unknown.
    std::optional<std::int64_t> spaceEndsAt;

    ForecastSuggestion suggestion;  ///< empty when it fits

    bool fitsFormat() const { return !formatEndsAt; }
    bool fitsSpace() const { return !spaceEndsAt; }
    bool fits() const { return fitsFormat() && fitsSpace(); }

    bool operator==(const SizeForecast&) const = default;
};

/// The sound of a movie as known before decoding.
struct SoundOutlook {
    int channels = 0;       ///< 0, 1 or 2; the maximum if not certain
    bool isCertain = true;  ///< `channels` is exact
};

/// Evaluates the track list only and reads nothing. Not certain if there is a track, which may be empty.
SoundOutlook soundOutlook(const MediaAsset& asset, const Settings& settings);

/// Decodes the beginning of the track to make the result certain. Throws like `AudioReader::hasSound`.
SoundOutlook certainSoundOutlook(const MediaAsset& asset, const Settings& settings,
                                 const IsCancelled& isCancelled);

/// Returns the free space, in bytes, in the folder of `output` or in its nearest existing parent. Empty if
/// unknown. An existing file at `output` counts as used, because it is kept until the new one is complete.
std::optional<std::uint64_t> spaceFor(const std::string& output);

/// Input of a forecast.
struct ForecastCase {
    Settings settings;
    ConversionPlan plan;  ///< of these settings
    SoundOutlook sound;
    std::optional<std::uint64_t> freeSpace;
};

/// Returns an upper bound of the size without decoding a picture. In Mode 4 the bound is the actual size.
SizeForecast forecastUpperBound(const ForecastCase& about);

/// Returns the expected size. In Mode 32 the mean of the samples represents every frame, and suggestions keep
/// a margin of twice its uncertainty. In Mode 4 `samples` is not used. Throws like `RecordSamples::at`.
SizeForecast forecastSize(const ForecastCase& about, RecordSamples& samples, const IsCancelled& isCancelled);

}  // namespace zeb
