#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "conversion/sound/SoundBytes.h"
#include "media/Media.h"

namespace zeb {

/// Receives the lines that reading a soundtrack gives; both may be empty.
struct SoundReports {
    std::function<void(const std::string&)> logged;
    /// The sound is lost although the source has a track.
    std::function<void(const std::string&)> warned;
};

/// The position of sound track `index` among `count` tracks, of which there is at least one; of the nearest
/// one when there is none of that number.
std::size_t nearestTrack(int index, std::size_t count);

/// Takes the sound out of a source.
class AudioReader {
public:
    static constexpr std::uint64_t allFrames = std::numeric_limits<std::uint64_t>::max();

    /// Decodes sound track `trackIndex` (the nearest one when there is none of that number) to unsigned 8-bit
    /// sound (128 = silence) of `targetRate` frames per second and `channels` interleaved channels (1 or 2),
    /// resampled as `SoundResampler` says. It is resampled while it is decoded: memory holds the result and a
    /// bounded buffer.
    ///
    /// Returns nothing, with one line to `reports`, when there is no track, none that can be decoded, or no
    /// sample in it; else one line about the format is logged. Of the result the first `maximumFrames` frames
    /// are kept.
    ///
    /// `isCancelled` (may be empty) is asked before each buffer of the source, at least every 4096 output
    /// frames and at least every 16384 samples: then `ZEBConverterError::cancelled` is thrown. `MediaError`
    /// when the track cannot be opened or reading it ends in an error of the system; damage further on ends
    /// the sound there.
    static SoundBytes read(const MediaAsset& asset, int targetRate, int channels, int trackIndex,
                           const IsCancelled& isCancelled, const SoundReports& reports,
                           std::uint64_t maximumFrames = allFrames);

    /// Whether `read` would give any sound: decodes the track's beginning, no more of it than that takes.
    /// Throws as `read` does.
    static bool hasSound(const MediaAsset& asset, int trackIndex, const IsCancelled& isCancelled);
};

}  // namespace zeb
