#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "media/Media.h"

namespace zeb {

/// A sound track as offered by the window.
struct AudioTrack {
    int index = 0;      ///< among the source's sound tracks, from 0
    std::string label;  ///< for the user, UTF-8

    bool operator==(const AudioTrack&) const = default;
};

/// Returns the tracks of a source with their labels.
std::vector<AudioTrack> audioTracks(const std::vector<SoundTrack>& tracks);

/// Returns a label: "Track 1 · Stereo · 48.0 kHz · aac ", without the parts that are unknown.
std::string audioTrackLabel(const SoundTrack& track, int index);

/// Returns the characters of a four-character code, or hexadecimal if one is not printable ASCII.
std::string fourCCText(std::uint32_t code);

/// Returns "44.1 kHz", "800 Hz"; empty if the rate is unknown or not positive.
std::string sampleRateText(std::optional<double> rate);

}  // namespace zeb
