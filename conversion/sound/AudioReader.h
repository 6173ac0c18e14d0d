#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "conversion/sound/SoundBytes.h"
#include "media/Media.h"

namespace zeb {

/// Receives the messages about a soundtrack. Both may be empty.
struct SoundReports {
    std::function<void(const std::string&)> logged;
    /// The sound is lost although the source has a track.
    std::function<void(const std::string&)> warned;
};

/// Clamps `index` to the valid sound track positions 0 ... `count` - 1; `count` is at least 1.
std::size_t nearestTrack(int index, std::size_t count);

/// Reads the sound of a source.
class AudioReader {
public:
    static constexpr std::uint64_t allFrames = std::numeric_limits<std::uint64_t>::max();

    /// Decodes sound track `trackIndex` (clamped to the existing tracks) to unsigned 8-bit
    /// sound (128 = silence) with `targetRate` frames per second and `channels` interleaved channels (1 or
    /// 2), resampled by `SoundResampler` while decoding. Memory holds the result and a bounded buffer.
    ///
    /// Returns nothing, with one line to `reports`, if there is no track, none that can be decoded, or no
    /// sample in it. Otherwise logs one line about the format. Keeps at most `maximumFrames` frames from
    /// `firstFrame` on.
    ///
    /// `isCancelled` (may be empty) is called before each source buffer, at least every 4096 output frames
    /// and at least every 16384 samples. If true, throws `ZEBConverterError::cancelled`. Throws `MediaError`
    /// if the track cannot be opened or a system error ends reading. Damage later in the track ends the sound
    /// there.
    static SoundBytes read(const MediaAsset& asset, int targetRate, int channels, int trackIndex,
                           const IsCancelled& isCancelled, const SoundReports& reports,
                           std::uint64_t maximumFrames = allFrames, std::uint64_t firstFrame = 0);

    /// Returns whether `read` would return any sound. Decodes only the beginning of the track. Throws like
    /// `read`.
    static bool hasSound(const MediaAsset& asset, int trackIndex, const IsCancelled& isCancelled);
};

}  // namespace zeb
