#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "media/Media.h"

namespace zeb {

/// What the bytes of a forecast rest on.
enum class ForecastBasis {
    arithmetic,  ///< nothing depends on the pictures
    samples,     ///< pictures of the film, encoded
    bound,       ///< the most that it can become
};

/// What would make a movie fit that does not. Each fits by itself, with the other settings as they are;
/// nothing where no value of it would do.
struct ForecastSuggestion {
    std::optional<int> fps;  ///< the largest frame rate that fits at this size
    /// Width and height for the settings such that the largest size that fits at this rate comes out: of the
    /// same aspect as the frames have now, in steps of 8 pixels along the longer side.
    std::optional<FrameSize> size;

    bool operator==(const ForecastSuggestion&) const = default;
};

/// How large the movie of a conversion will be.
struct SizeForecast {
    ConversionPlan plan;
    std::uint64_t bytes = 0;    ///< of the file
    double bytesPerSecond = 0;  ///< of the movie
    ForecastBasis basis = ForecastBasis::arithmetic;
    /// The file will have exactly these bytes, whatever pictures and sound turn out to be.
    bool isExact = false;

    int samples = 0;  ///< pictures that were encoded
    /// For samples: the standard error of their mean as a part of it; nothing from one picture alone.
    std::optional<double> uncertainty;

    /// The second of the movie, from 0, that no longer finds a place below the format's 4 GiB: where a run
    /// would end with `ZEBWriterError`. Nothing when all fit.
    std::optional<std::int64_t> formatEndsAt;
    /// What may be written where the output goes; nothing when unknown.
    std::optional<std::uint64_t> freeSpace;
    /// The second of the movie for which the space no longer suffices; nothing when it does, or is unknown.
    std::optional<std::int64_t> spaceEndsAt;

    ForecastSuggestion suggestion;  ///< empty when it fits

    bool fitsFormat() const { return !formatEndsAt; }
    bool fitsSpace() const { return !spaceEndsAt; }
    bool fits() const { return fitsFormat() && fitsSpace(); }

    bool operator==(const SizeForecast&) const = default;
};

/// The sound of a movie as far as it is known before it is decoded.
struct SoundOutlook {
    int channels = 0;       ///< 0, 1 or 2: at most as many will be written
    bool isCertain = true;  ///< just as many
};

/// By the tracks alone; reads nothing. Not certain when there is a track, for it may turn out to be empty.
SoundOutlook soundOutlook(const MediaAsset& asset, const Settings& settings);

/// The same, made certain by decoding the track's beginning. Throws as `AudioReader::hasSound` does.
SoundOutlook certainSoundOutlook(const MediaAsset& asset, const Settings& settings,
                                 const IsCancelled& isCancelled);

/// Returns the free space of the folder of `output`, or of the nearest folder above it that exists; nothing
/// when unknown. A file that stands at `output` counts as used: it stays until the new one is complete.
std::optional<std::uint64_t> spaceFor(const std::string& output);

/// What a forecast is about.
struct ForecastCase {
    Settings settings;
    ConversionPlan plan;  ///< of these settings
    SoundOutlook sound;
    std::optional<std::uint64_t> freeSpace;
};

/// The records' sizes of a film's sample pictures, for forecasts in Mode 32. Keeps the pictures, so that
/// another frame size only costs drawing and encoding them, and the sizes found for the last frame sizes.
/// Used by one thread at a time.
class RecordSamples {
public:
    /// `pictures` in the film's order, at least one; `threads` to encode with.
    explicit RecordSamples(std::vector<std::shared_ptr<const Picture>> pictures, int threads = 1);

    /// In the pictures' order; a picture that cannot be drawn is left out. Throws `MediaError::interrupted`
    /// on cancellation, and the picture's error when none can be drawn.
    const std::vector<std::uint64_t>& at(FrameSize size, const IsCancelled& isCancelled);

    /// How many pictures there are; the same one several times in a row counts once, and is encoded once.
    int distinctPictures() const { return m_distinctPictures; }

private:
    std::vector<std::uint64_t> encode(FrameSize size, const IsCancelled& isCancelled) const;

    std::vector<std::shared_ptr<const Picture>> m_pictures;
    int m_threads;
    int m_distinctPictures = 0;
    std::map<std::pair<int, int>, std::vector<std::uint64_t>> m_known;
};

/// The most that the run can write, without looking at a picture: what fits by this fits. In Mode 4 that is
/// what it does write.
SizeForecast forecastUpperBound(const ForecastCase& about);

/// What the run will write. In Mode 32 the mean of the samples stands for every frame, and suggestions keep a
/// distance of twice its uncertainty; `samples` is not used in Mode 4. Throws as `RecordSamples::at` does.
SizeForecast forecastSize(const ForecastCase& about, RecordSamples& samples, const IsCancelled& isCancelled);

}  // namespace zeb
