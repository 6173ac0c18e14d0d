#include "conversion/forecast/RecordSamples.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cmath>
#include <cstdint>
#include <exception>
#include <limits>
#include <mutex>
#include <optional>
#include <thread>

#include "conversion/look/FrameMaker.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb {

namespace {

using PicturePointer = std::shared_ptr<const Picture>;

constexpr double tick = 1.0 / 600;

/// Returns times in the middle of equal parts of the movie, which begins at `start` of the video. The movie
/// repeats its last picture until its last second is full.
std::vector<MediaTime> wantedTimes(double start, double duration, int count) {
    const double length = duration > 0 ? duration : 0;
    const double last = std::max(length - tick, 0.0);
    const double movie = std::max(std::ceil(length), 1.0);
    std::vector<MediaTime> times;
    times.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        times.push_back(
            MediaTime::withSeconds(start + std::min(last, movie * (2 * i + 1) / (2 * count)), 600));
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
        : m_times(wantedTimes(effort.startSeconds, effort.movieSeconds.value_or(asset.duration()),
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

RecordSamples::RecordSamples(std::vector<std::shared_ptr<const Picture>> pictures, int threads)
    : m_pictures(std::move(pictures)), m_threads(std::max(threads, 1)) {
    assert(!m_pictures.empty());
    for (std::size_t i = 0; i < m_pictures.size(); ++i)
        m_distinctPictures += i == 0 || m_pictures[i] != m_pictures[i - 1];
}

const std::vector<std::uint64_t>& RecordSamples::at(const FrameRecipe& recipe,
                                                    const IsCancelled& isCancelled) {
    constexpr std::size_t mostKnown = 64;
    for (const auto& [known, sizes] : m_known) {
        if (known == recipe) return sizes;
    }
    std::vector<std::uint64_t> sizes = encode(recipe, isCancelled);
    if (m_known.size() >= mostKnown) m_known.pop_front();
    return m_known.emplace_back(recipe, std::move(sizes)).second;
}

std::vector<std::uint64_t> RecordSamples::encode(const FrameRecipe& recipe,
                                                 const IsCancelled& isCancelled) const {
    const auto tools = std::make_shared<const FrameTools>(recipe);
    std::vector<std::uint64_t> sizes(m_pictures.size());  // 0: could not be drawn
    std::atomic<std::size_t> next = 0;
    std::atomic<bool> isInterrupted = false;
    std::mutex mutex;
    std::exception_ptr failure;
    const auto isRepeat = [this](std::size_t index) {
        return index > 0 && m_pictures[index] == m_pictures[index - 1];
    };
    const auto work = [&] {
        FrameMaker maker(tools);
        for (std::size_t index = next++; index < m_pictures.size(); index = next++) {
            if (isRepeat(index)) continue;
            if (isInterrupted || (isCancelled && isCancelled())) {
                isInterrupted = true;
                return;
            }
            try {
                sizes[index] = maker.record(*m_pictures[index]).size();
            } catch (...) {
                const std::lock_guard lock(mutex);
                failure = std::current_exception();
            }
        }
    };
    {
        std::vector<std::jthread> threads;
        for (int i = 1; i < std::min(m_threads, static_cast<int>(m_pictures.size())); ++i)
            threads.emplace_back(work);
        work();
    }
    if (isInterrupted) throw MediaError::wasInterrupted();
    for (std::size_t index = 1; index < sizes.size(); ++index) {
        if (isRepeat(index)) sizes[index] = sizes[index - 1];
    }
    std::erase(sizes, std::uint64_t{0});
    if (sizes.empty()) std::rethrow_exception(failure);
    return sizes;
}

}  // namespace zeb
