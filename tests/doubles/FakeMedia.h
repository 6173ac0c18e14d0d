#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "media/Media.h"

/// A media layer for tests: videos are defined in code instead of read from files.
namespace zeb::fake {

/// A picture of stripes and blocks with colours derived from a seed.
class FakePicture final : public Picture {
public:
    explicit FakePicture(std::uint32_t seed, bool canBeDrawn = true)
        : m_seed(seed), m_canBeDrawn(canBeDrawn) {}

    int width() const override { return 640; }
    int height() const override { return 480; }

    void draw(const BitmapContext& bitmap) const override {
        if (!m_canBeDrawn)
            throw PlatformError("Fake", 1, "The picture cannot be drawn.", {"The picture cannot be drawn."});
        std::size_t at = 0;
        for (int y = 0; y < bitmap.height; ++y) {
            for (int x = 0; x < bitmap.width; ++x) {
                const std::uint32_t colour = ((static_cast<std::uint32_t>(x) >> 3) + m_seed) * 2654435761U +
                                             (static_cast<std::uint32_t>(y) >> 2) * 40503U * (m_seed | 1U);
                bitmap.pixels[at++] = static_cast<std::uint8_t>(colour >> 24);
                bitmap.pixels[at++] = static_cast<std::uint8_t>(colour >> 16);
                bitmap.pixels[at++] = static_cast<std::uint8_t>(colour >> 8);
                bitmap.pixels[at++] = 255;
            }
        }
    }

private:
    std::uint32_t m_seed;
    bool m_canBeDrawn;
};

/// A buffer of decoded sound.
struct FakeSamples {
    double sampleRate = 48000;
    int channelsPerFrame = 2;
    std::vector<float> samples;
};

/// A scripted video. Its functions run on the reading thread, so they may wait, count or throw.
struct FakeFilm {
    /// Returns the picture for a time in seconds. `isCancelled` is the reader's cancellation check.
    using Grab =
        std::function<std::shared_ptr<const Picture>(double seconds, const IsCancelled& isCancelled)>;
    /// Fills in sound buffer `index`, counted from 0. Returns false at the end.
    using Sound = std::function<bool(std::size_t index, FakeSamples& buffer)>;

    std::vector<VideoTrack> videoTracks{{{640, 480}, {}, 10}};
    double duration = 1;  ///< end of the pictures unless the track states it
    Grab grab;
    double keyDistance = 0;  ///< seconds from one key picture to the next; 0 = every picture is one
    std::vector<Sound> soundTracks;
    std::vector<SoundTrack> soundTrackFacts;  ///< facts of the first tracks; empty facts for the others
    bool soundStarts = true;
    std::optional<MediaError> soundCannotBeOpened;
};

/// A sound track of these buffers.
inline FakeFilm::Sound soundOf(std::vector<FakeSamples> buffers) {
    return [buffers = std::move(buffers)](std::size_t index, FakeSamples& buffer) {
        if (index >= buffers.size()) return false;
        buffer = buffers[index];
        return true;
    };
}

/// Requests that readers of a video received. Guarded by `mutex`.
struct FakeRecord {
    std::mutex mutex;
    std::vector<double> grabTimes;
    std::vector<double> nearbyTimes;
    std::vector<std::string> opened;        ///< names of opened videos
    std::vector<std::size_t> soundReaders;  ///< track of each sound reader
};

class FakeImageGenerator final : public ImageGenerator {
public:
    FakeImageGenerator(std::shared_ptr<const FakeFilm> film, std::shared_ptr<FakeRecord> record,
                       IsCancelled isCancelled)
        : m_film(std::move(film)), m_record(std::move(record)), m_isCancelled(std::move(isCancelled)) {}

    void expect(const GrabSchedule&) override {}

    std::shared_ptr<const Picture> copyImage(MediaTime time) override {
        {
            const std::lock_guard lock(m_record->mutex);
            m_record->grabTimes.push_back(time.seconds());
        }
        if (m_isCancelled()) throw MediaError::wasInterrupted();
        return m_film->grab(time.seconds(), m_isCancelled);
    }

    TimedPicture copyNearbyImage(MediaTime time, int pictures) override {
        const double rate = m_film->videoTracks.front().nominalFrameRate;
        const double distance = m_film->keyDistance;
        const double key = distance > 0 ? std::floor(time.seconds() / distance) * distance : time.seconds();
        const double found = std::min(time.seconds(), key + (pictures - 1) / rate);
        {
            const std::lock_guard lock(m_record->mutex);
            m_record->nearbyTimes.push_back(found);
        }
        if (m_isCancelled()) throw MediaError::wasInterrupted();
        if (!m_nearby.picture || m_nearby.time != found)
            m_nearby = {found, m_film->grab(found, m_isCancelled)};
        return m_nearby;
    }

private:
    std::shared_ptr<const FakeFilm> m_film;
    std::shared_ptr<FakeRecord> m_record;
    IsCancelled m_isCancelled;
    TimedPicture m_nearby;
};

class FakeSoundReader final : public SoundReader {
public:
    FakeSoundReader(std::shared_ptr<const FakeFilm> film, std::size_t track, IsCancelled isCancelled)
        : m_film(std::move(film)), m_track(track), m_isCancelled(std::move(isCancelled)) {}

    bool startReading() override { return m_film->soundStarts; }

    std::optional<SampleBuffer> copyNextSampleBuffer() override {
        if (m_isCancelled()) throw MediaError::wasInterrupted();
        if (!m_film->soundTracks[m_track](m_next++, m_buffer)) return {};
        return SampleBuffer{m_buffer.sampleRate, m_buffer.channelsPerFrame, m_buffer.samples};
    }

private:
    std::shared_ptr<const FakeFilm> m_film;
    std::size_t m_track;
    IsCancelled m_isCancelled;
    std::size_t m_next = 0;
    FakeSamples m_buffer;
};

class FakeAsset final : public MediaAsset {
public:
    explicit FakeAsset(FakeFilm film, std::shared_ptr<FakeRecord> record = std::make_shared<FakeRecord>())
        : m_film(std::make_shared<const FakeFilm>(std::move(film))),
          m_record(std::move(record)),
          m_videoTracks(m_film->videoTracks),
          m_soundTracks(m_film->soundTrackFacts) {
        m_soundTracks.resize(std::max(m_film->soundTracks.size(), m_soundTracks.size()));
        for (VideoTrack& track : m_videoTracks) {
            if (track.end == TrackEnd{}) track.end.time = m_film->duration;
        }
    }

    const std::vector<VideoTrack>& videoTracks() const override { return m_videoTracks; }
    const std::vector<SoundTrack>& soundTracks() const override { return m_soundTracks; }

    std::unique_ptr<ImageGenerator> makeImageGenerator(int, IsCancelled isCancelled) const override {
        return std::make_unique<FakeImageGenerator>(m_film, m_record, std::move(isCancelled));
    }

    std::unique_ptr<SoundReader> makeSoundReader(std::size_t track, IsCancelled isCancelled) const override {
        if (m_film->soundCannotBeOpened) throw MediaError(*m_film->soundCannotBeOpened);
        const std::lock_guard lock(m_record->mutex);
        m_record->soundReaders.push_back(track);
        return std::make_unique<FakeSoundReader>(m_film, track, std::move(isCancelled));
    }

private:
    std::shared_ptr<const FakeFilm> m_film;
    std::shared_ptr<FakeRecord> m_record;
    std::vector<VideoTrack> m_videoTracks;
    std::vector<SoundTrack> m_soundTracks;
};

/// Opens fake videos by name.
class FakeLibrary final : public MediaLibrary {
public:
    void add(const std::string& path, FakeFilm film) { m_films.insert_or_assign(path, std::move(film)); }
    FakeRecord& record() const { return *m_record; }

    std::shared_ptr<const MediaAsset> open(const std::string& path, IsCancelled isCancelled) const override {
        if (isCancelled()) throw MediaError::wasInterrupted();
        const auto film = m_films.find(path);
        if (film == m_films.end()) throw MediaError(MediaError::cannotOpen, {"No such film."});
        const std::lock_guard lock(m_record->mutex);
        m_record->opened.push_back(path);
        return std::make_shared<FakeAsset>(film->second, m_record);
    }

private:
    std::map<std::string, FakeFilm> m_films;
    std::shared_ptr<FakeRecord> m_record = std::make_shared<FakeRecord>();
};

}  // namespace zeb::fake
