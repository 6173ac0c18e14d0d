#include "conversion/plan/AudioTrack.h"

#include <array>

#include "platform/text/LocalizedText.h"
#include "platform/text/TextFormat.h"

namespace zeb {
namespace {

std::string channelText(const SoundTrack& track) {
    const int channels = track.channelsPerFrame.value_or(0);
    if (channels < 1) return {};
    if (channels == 1) return "Mono";
    if (channels == 2) return "Stereo";
    return std::to_string(channels) + "ch";
}

}  // namespace

std::vector<AudioTrack> audioTracks(const std::vector<SoundTrack>& tracks) {
    std::vector<AudioTrack> result;
    for (const SoundTrack& track : tracks) {
        const auto index = static_cast<int>(result.size());
        result.push_back({index, audioTrackLabel(track, index)});
    }
    return result;
}

std::string audioTrackLabel(const SoundTrack& track, int index) {
    std::string label = localizedText("audio_track_format", {std::int64_t{index} + 1});
    for (const std::string& part : {channelText(track), sampleRateText(track.sampleRate),
                                    track.formatCode ? fourCCText(*track.formatCode) : std::string()}) {
        if (!part.empty()) label += " · " + part;
    }
    return label;
}

std::string fourCCText(std::uint32_t code) {
    std::string characters;
    std::string hexadecimal = "0x";
    bool isPrintable = true;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const auto byte = static_cast<std::uint8_t>(code >> shift);
        characters += static_cast<char>(byte);
        isPrintable = isPrintable && byte >= 32 && byte <= 126;
        constexpr const char* digits = "0123456789ABCDEF";
        hexadecimal += {digits[byte >> 4], digits[byte & 15]};
    }
    return isPrintable ? characters : hexadecimal;
}

std::string sampleRateText(std::optional<double> rate) {
    if (!rate || !(*rate > 0)) return {};
    const bool isLarge = *rate >= 1000;
    const std::array<TextArgument, 1> value = {isLarge ? *rate / 1000 : *rate};
    return formatText(isLarge ? "%.1f kHz" : "%.0f Hz", value);
}

}  // namespace zeb
