#include "conversion/forecast/SamplePictures.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "conversion/plan/SourceAnalysis.h"

namespace zeb {

namespace {

using PicturePointer = std::shared_ptr<const Picture>;

constexpr double tick = 1.0 / 600;

/// Returns times in the middle of equal parts of the movie. The movie repeats the last picture of the video
/// until its last second is full.
std::vector<MediaTime> wantedTimes(double duration, int count) {
    const double length = duration > 0 ? duration : 0;
    const double last = std::max(length - tick, 0.0);
    const double movie = std::max(std::ceil(length), 1.0);
    std::vector<MediaTime> times;
    times.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        times.push_back(MediaTime::withSeconds(std::min(last, movie * (2 * i + 1) / (2 * count)), 600));
    return times;
}

/// Limits the number of pictures kept in memory. Most take 1.5 bytes per pixel; high bit depths without
/// chroma subsampling take up to 8.
int pictureCount(const VideoTrack& track, int most) {
    constexpr double budget = 300e6;
    constexpr double bytesPerPixel = 3;
    const SourceInfo source = sourceInfo(track);
    const double bytes = bytesPerPixel * std::max(source.width, 1) * std::max(source.height, 1);
    const int fewest = std::min(most, 4);
    return static_cast<int>(
        std::clamp(budget / bytes, static_cast<double>(fewest), static_cast<double>(most)));
}

void rethrowIfReadingEnded(const MediaError& error) {
    if (error.endsReading()) throw MediaError(error);
}

class Sampler {
public:
    Sampler(const MediaAsset& asset, const SamplingEffort& effort, const IsCancelled& isCancelled)
        : m_times(wantedTimes(effort.movieSeconds.value_or(asset.duration()),
                              pictureCount(asset.videoTracks().front(), effort.pictures))),
          m_decodedPictures(std::max(effort.decodedPictures, 1)),
          m_secondsLeft(effort.decodedSeconds),
          m_isCancelled(isCancelled),
          m_generator(asset.makeImageGenerator(std::max(effort.threads, 1), isCancelled)) {}

    std::vector<PicturePointer> sample();

private:
    void grabNearby();
    void replaceRepeats();
    PicturePointer grab(MediaTime time);
    void poll() const {
        if (m_isCancelled()) throw MediaError::wasInterrupted();
    }

    std::vector<MediaTime> m_times;
    int m_decodedPictures;
    double m_secondsLeft;
    const IsCancelled& m_isCancelled;
    std::unique_ptr<ImageGenerator> m_generator;
    std::vector<TimedPicture> m_pictures;  ///< one per time; null if none was decoded
};

void Sampler::grabNearby() {
    for (const MediaTime time : m_times) {
        poll();
        TimedPicture found;
        try {
            found = m_generator->copyNearbyImage(time, m_decodedPictures);
        } catch (const MediaError& error) {
            rethrowIfReadingEnded(error);
        }
        m_pictures.push_back(std::move(found));
    }
}

PicturePointer Sampler::grab(MediaTime time) {
    poll();
    try {
        return m_generator->copyImage(time);
    } catch (const MediaError& error) {
        rethrowIfReadingEnded(error);
        return {};
    }
}

/// Decodes further for times whose picture is the same as that of the previous time.
void Sampler::replaceRepeats() {
    PicturePointer last;
    double reached = 0;
    for (std::size_t i = 0; i < m_times.size(); ++i) {
        const TimedPicture& found = m_pictures[i];
        if (!found.picture) continue;
        const double time = m_times[i].seconds();
        if (found.picture != last) {
            last = found.picture;
            reached = found.time;
            continue;
        }
        const double distance = std::max(time - reached, 0.0);
        if (distance > m_secondsLeft) continue;
        m_secondsLeft -= distance;
        reached = time;
        if (PicturePointer picture = grab(m_times[i])) m_pictures[i] = {time, std::move(picture)};
    }
}

std::vector<PicturePointer> Sampler::sample() {
    grabNearby();
    if (m_secondsLeft > 0) replaceRepeats();
    std::vector<PicturePointer> pictures;
    for (TimedPicture& found : m_pictures) {
        if (found.picture) pictures.push_back(std::move(found.picture));
    }
    for (std::size_t i = 0; i < m_times.size() && pictures.empty(); ++i) {
        if (PicturePointer picture = grab(m_times[i])) pictures.push_back(std::move(picture));
    }
    if (pictures.empty()) throw MediaError(MediaError::cannotDecode, {"error_media_no_picture"});
    return pictures;
}

}  // namespace

std::vector<PicturePointer> samplePictures(const MediaAsset& asset, const SamplingEffort& effort,
                                           const IsCancelled& isCancelled) {
    const IsCancelled mayStop = isCancelled ? isCancelled : [] { return false; };
    return Sampler(asset, effort, mayStop).sample();
}

}  // namespace zeb
