#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/Media.h"

namespace zeb {

/// A sound track as the window offers it.
struct AudioTrack {
    int index = 0;      ///< among the source's sound tracks, from 0
    std::string label;  ///< for the user, UTF-8

    bool operator==(const AudioTrack&) const = default;
};

/// The tracks of a source with their labels.
std::vector<AudioTrack> audioTracks(const std::vector<SoundTrack>& tracks);

/// What tells a track from others: "Track 1 · Stereo · 48.0 kHz · aac ", without the parts that are unknown.
std::string audioTrackLabel(const SoundTrack& track, int index);

/// A four-character code as its characters, or in hexadecimal when one of them cannot be printed (ASCII).
std::string fourCCText(std::uint32_t code);

/// "44.1 kHz", "800 Hz"; empty without a rate above 0.
std::string sampleRateText(std::optional<double> rate);

}  // namespace zeb
