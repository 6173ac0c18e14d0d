#include "media/Media.h"

#include <algorithm>
#include <cmath>

namespace zeb {

MediaTime MediaTime::withSeconds(double seconds, std::int32_t preferredTimescale) {
    return {std::llround(seconds * preferredTimescale), preferredTimescale};
}

MediaTime GrabSchedule::at(std::int64_t index) const {
    constexpr std::int32_t timescale = 600;
    const double seconds =
        std::min(static_cast<double>(first + index) / static_cast<double>(perSecond), last);
    return MediaTime::withSeconds(seconds, timescale);
}

double MediaAsset::duration() const {
    double latest = videoTracks().empty() ? 0 : videoTracks().front().end.time;
    for (const SoundTrack& track : soundTracks())
        latest = std::max(latest, track.end.time);
    return latest;
}

}  // namespace zeb
