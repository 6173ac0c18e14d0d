#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "media/Media.h"

namespace zeb {

/// The measures of a comparison.
enum class Measure : std::size_t {
    deltaE40,           ///< S-CIELAB at 40 pixels per degree (SpatialCIELAB.h): about 1:1 on a monitor
    deltaE20,           ///< S-CIELAB at 20 pixels per degree: about 2:1 on a monitor
    detail,             ///< Detail.h
    flicker,            ///< Flicker.h
    similarity,         ///< StructuralSimilarity.h
    peakSignal,         ///< peak signal-to-noise ratio in dB (SquaredError.h); infinite for equal pictures
    blurredPeakSignal,  ///< the same of blurred linear light
};
inline constexpr std::size_t measureCount = 7;

/// A measure over the moments of a movie. Both values are empty if no moment has this measure.
struct Figure {
    /// The mean. For the signal-to-noise ratios, the ratio of the mean squared error, so that moments without
    /// any error do not make it infinite.
    std::optional<double> mean;
    std::optional<double> worst;
    std::int64_t worstFrame =
        0;  ///< the first frame with the worst value; for flicker, the first of the pair
};

struct Comparison {
    FrameSize size;                   ///< of the movie
    int fps = 1;                      ///< of the movie
    std::int64_t frames = 0;          ///< of the movie
    std::int64_t moments = 0;         ///< measured
    std::int64_t flickerPairs = 0;    ///< pairs of frames that count for the flicker
    std::int64_t momentsLeftOut = 0;  ///< of which a picture is damaged, in the film or in the movie
    std::array<Figure, measureCount> figures;

    const Figure& figure(Measure measure) const { return figures[static_cast<std::size_t>(measure)]; }
};

struct ComparisonSettings {
    /// Greatest number of moments to measure; 0 = every frame. A moment is a frame and, for the flicker, the
    /// frame after it. Moments are in the middle of equal parts of the movie.
    std::int64_t moments = 32;
    int threads = 0;  ///< 0 = number of cores; does not change the figures
    /// The shape and the time range of the movie, without automatic ones. The film's pictures are treated so;
    /// the other settings are not used.
    Settings film{};
};

struct ComparisonCallbacks {
    /// Returns true once the comparison must stop. Called often, from several threads. May be empty.
    IsCancelled isCancelled;
    /// A line about a problem that does not end the comparison; on the calling thread. May be empty.
    std::function<void(const std::string& line)> warned;
};

/// Measures how a movie differs from the film that it was made of. The film's picture of frame i is the one
/// on screen at i / fps after the start of the range, drawn in the shape and at the size of the movie's
/// picture; the movie's picture is decoded as its screen shows it. The figures depend on both files and
/// `moments` only.
///
/// `film` must have pictures. Reads unfinished and damaged movies as far as possible. Warns if the lengths of
/// film and movie differ by more than a second, and of moments that are left out.
///
/// Throws `ZEBFormatError` (not a movie), `ExportError` (the movie cannot be read, or no moment can be
/// measured), `ZEBConverterError` and `MediaError` (cancelled), `MediaError` (film), `PlatformError`
/// (drawing).
Comparison compareMovie(const MediaAsset& film, const std::string& movie, const ComparisonSettings& settings,
                        const ComparisonCallbacks& callbacks);

/// Returns the frame of moment `index` of `moments`, of a movie of `frames` frames: the middle of equal
/// parts.
std::int64_t frameOfMoment(std::int64_t index, std::int64_t moments, std::int64_t frames);

}  // namespace zeb
