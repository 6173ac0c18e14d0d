#include "conversion/plan/ConversionPlan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "conversion/plan/SettingsError.h"
#include "conversion/sound/AudioReader.h"
#include "format/Layout.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"

namespace zeb {

namespace {

/// Returns the number of one-second blocks for a non-negative duration.
std::int64_t blockCount(double duration) {
    // Grab times are 64-bit counts of 1/600 s.
    constexpr double longest = 0x1p63 / 600 - 1024;
    if (!(duration < longest)) {
        throw MediaError(MediaError::cannotDecode, {"error_source_duration"});
    }
    return std::max<std::int64_t>(1, static_cast<std::int64_t>(std::ceil(duration)));
}

/// Returns the sound track that the movie will contain; null if none.
const SoundTrack* includedSound(const MediaAsset& asset, const Settings& settings) {
    const std::vector<SoundTrack>& tracks = asset.soundTracks();
    if (!settings.includeAudio || settings.audioChannels < 1 || tracks.empty()) return nullptr;
    return &tracks[nearestTrack(settings.audioTrackIndex, tracks.size())];
}

double movieDuration(const MediaAsset& asset, const Settings& settings) {
    constexpr double longestPadding = 0.1;  // seconds
    const double pictures = asset.videoTracks().front().end.time;
    const SoundTrack* sound = includedSound(asset, settings);
    return sound != nullptr && sound->end.time > pictures + longestPadding ? sound->end.time : pictures;
}

/// Throws `SettingsError` if the colours, the dithering and the mode do not exist together.
void checkColours(const Settings& settings) {
    using Dithering = Colours::Dithering;
    const Colours& colours = settings.colours;
    const bool isHighColour = settings.qlModeNumber == 32;
    const bool isNatural = colours.kind == Colours::Kind::natural;
    if (isNatural && isHighColour) throw SettingsError({"error_natural_mode"});
    if (isNatural && settings.dither) throw SettingsError({"error_natural_dither"});
    switch (colours.dithering.value_or(isNatural ? Dithering::ordered : Dithering::none)) {
        case Dithering::none:
            if (isNatural) throw SettingsError({"error_natural_dither"});
            break;
        case Dithering::diffusion:
            if (isNatural) throw SettingsError({"error_natural_dither"});
            if (isHighColour) throw SettingsError({"error_dithering_mode32"});
            break;
        case Dithering::ordered:
        case Dithering::fine:
            if (!isNatural) throw SettingsError({"error_dithering_natural"});
            break;
        case Dithering::rows:
            if (!isHighColour) throw SettingsError({"error_dithering_rows"});
            break;
    }
}

/// Restricts the plan to the time range. `duration` is that of the whole source.
void selectRange(const TimeRange& range, double duration, ConversionPlan& plan) {
    const auto frameAt = [&](const TimePoint& time) {
        return std::llround(time.seconds(duration) * plan.fps);
    };
    const auto timeOf = [&](std::int64_t frame) { return static_cast<double>(frame) / plan.fps; };
    if (range.from && range.from->seconds(duration) >= duration)
        throw SettingsError({"error_start_beyond_end_format", {durationText(duration)}});
    plan.firstFrame = range.from ? frameAt(*range.from) : 0;
    plan.duration = duration - timeOf(plan.firstFrame);
    if (range.to && range.to->seconds(duration) < duration) {
        const std::int64_t end = frameAt(*range.to);
        if (end <= plan.firstFrame) throw SettingsError({"error_empty_range"});
        plan.duration = std::min(plan.duration, static_cast<double>(end - plan.firstFrame) / plan.fps);
    }
    if (!(plan.duration > 0)) throw SettingsError({"error_empty_range"});
}

/// Returns the end of the converted part in seconds from the start of the source.
double endOf(const ConversionPlan& plan) {
    return static_cast<double>(plan.firstFrame) / plan.fps + plan.duration;
}

}  // namespace

void checkSettings(const Settings& settings) {
    checkColours(settings);
    const TimeRange& range = settings.time;
    if (range.from && range.to && range.from->unit == range.to->unit && range.to->value <= range.from->value)
        throw SettingsError({"error_empty_range"});
}

ConversionPlan planConversion(const MediaAsset& asset, const Settings& settings) {
    checkSettings(settings);
    ConversionPlan plan;
    plan.source = sourceInfo(asset.videoTracks().front());
    plan.source.width = std::max(plan.source.width, 1);
    plan.source.height = std::max(plan.source.height, 1);
    plan.size = frameGeometry(plan.source.width, plan.source.height, settings).size;
    plan.fps = settings.fps < 1 ? 1 : std::min(plan.source.fps, settings.fps);

    const double duration = movieDuration(asset, settings);
    plan.duration = duration > 0 ? duration : 0;  // also for not-a-number
    if (settings.time != TimeRange{}) selectRange(settings.time, plan.duration, plan);
    plan.seconds = blockCount(plan.duration);
    if (plan.seconds > std::numeric_limits<std::int64_t>::max() / plan.fps) {
        throw MediaError(MediaError::cannotDecode, {"error_source_many_frames"});
    }
    plan.totalFrames = plan.seconds * plan.fps;
    return plan;
}

std::int64_t firstSample(const ConversionPlan& plan) {
    return std::llround(static_cast<double>(plan.firstFrame) * layout::sampleRate / plan.fps);
}

std::int64_t sampleCount(const Settings& settings, const ConversionPlan& plan) {
    // The sound of a whole film ends with the last second, the sound of a part with the part.
    constexpr std::int64_t most = std::numeric_limits<std::int64_t>::max() / layout::sampleRate;
    if (!settings.time.to) return std::min(plan.seconds, most) * layout::sampleRate;
    return std::llround(std::min(plan.duration, static_cast<double>(most)) * layout::sampleRate);
}

std::string breakOffWarning(const MediaAsset& asset, const Settings& settings, const ConversionPlan& plan) {
    const auto warning = [](const char* key, const TrackEnd& end) {
        return localizedText(key, {durationText(end.time), durationText(*end.stated)});
    };
    // The end of an earlier part is not a break.
    const double end = endOf(plan);
    const auto breaksOff = [end](const TrackEnd& track) { return track.stated && track.time <= end + 1e-6; };
    const TrackEnd& pictures = asset.videoTracks().front().end;
    if (breaksOff(pictures)) return warning("warning_film_breaks_off_format", pictures);
    const SoundTrack* sound = includedSound(asset, settings);
    if (sound != nullptr && breaksOff(sound->end))
        return warning("warning_sound_breaks_off_format", sound->end);
    return {};
}

GrabSchedule grabSchedule(const ConversionPlan& plan) {
    // The last grab is one tick before the end, strictly inside the video.
    constexpr double tick = 1.0 / 600;
    return {plan.totalFrames, plan.fps, std::max(endOf(plan) - tick, 0.0), plan.firstFrame};
}

}  // namespace zeb
