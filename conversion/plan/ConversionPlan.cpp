#include "conversion/plan/ConversionPlan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "conversion/sound/AudioReader.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"

namespace zeb {

namespace {

/// Sides have 64 bits: the product of a 32-bit request and a 32-bit source side is precise enough and cannot
/// overflow.
int frameSide(std::int64_t side) {
    return proposedSide(
        static_cast<int>(std::clamp<std::int64_t>(side, 0, std::numeric_limits<std::int32_t>::max())));
}

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

}  // namespace

FrameSize targetSize(int sourceWidth, int sourceHeight, const Settings& settings) {
    const double sourceW = std::max(sourceWidth, 1);
    const double sourceH = std::max(sourceHeight, 1);
    std::int64_t width = settings.width;
    std::int64_t height = settings.height;

    if (settings.preserveAspect) {
        const double sourceAspect = sourceW / sourceH;
        const double requestedAspect = static_cast<double>(width > 0 ? width : 1) /
                                       static_cast<double>(std::max<std::int64_t>(height, 1));
        if (sourceAspect < requestedAspect) {
            width = static_cast<std::int64_t>(sourceAspect * static_cast<double>(height));
        } else {
            height = static_cast<std::int64_t>(static_cast<double>(width) / sourceAspect);
        }
    }

    // Never exceed the source in either direction; scale both sides by the same factor.
    const double scale = std::min(sourceW / static_cast<double>(std::max<std::int64_t>(width, 1)),
                                  sourceH / static_cast<double>(std::max<std::int64_t>(height, 1)));
    if (scale < 1) {
        width = static_cast<std::int64_t>(std::floor(scale * static_cast<double>(width)));
        height = static_cast<std::int64_t>(std::floor(scale * static_cast<double>(height)));
    }
    return {frameSide(width), frameSide(height)};
}

ConversionPlan planConversion(const MediaAsset& asset, const Settings& settings) {
    ConversionPlan plan;
    plan.source = sourceInfo(asset.videoTracks().front());
    plan.source.width = std::max(plan.source.width, 1);
    plan.source.height = std::max(plan.source.height, 1);
    plan.size = targetSize(plan.source.width, plan.source.height, settings);
    plan.fps = settings.fps < 1 ? 1 : std::min(plan.source.fps, settings.fps);

    const double duration = movieDuration(asset, settings);
    plan.duration = duration > 0 ? duration : 0;  // also for not-a-number
    plan.seconds = blockCount(plan.duration);
    if (plan.seconds > std::numeric_limits<std::int64_t>::max() / plan.fps) {
        throw MediaError(MediaError::cannotDecode, {"error_source_many_frames"});
    }
    plan.totalFrames = plan.seconds * plan.fps;
    return plan;
}

std::string breakOffWarning(const MediaAsset& asset, const Settings& settings) {
    const auto warning = [](const char* key, const TrackEnd& end) {
        return localizedText(key, {durationText(end.time), durationText(*end.stated)});
    };
    const TrackEnd& pictures = asset.videoTracks().front().end;
    if (pictures.stated) return warning("warning_film_breaks_off_format", pictures);
    const SoundTrack* sound = includedSound(asset, settings);
    if (sound != nullptr && sound->end.stated) return warning("warning_sound_breaks_off_format", sound->end);
    return {};
}

GrabSchedule grabSchedule(const ConversionPlan& plan) {
    // The last grab is one tick before the end, strictly inside the video.
    constexpr double tick = 1.0 / 600;
    return {plan.totalFrames, plan.fps, std::max(plan.duration - tick, 0.0)};
}

}  // namespace zeb
