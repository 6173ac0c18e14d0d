#include "conversion/sound/AudioReader.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "conversion/sound/SoundResampler.h"
#include "format/ZEBErrors.h"
#include "platform/text/LocalizedText.h"

namespace zeb {

namespace {

struct Request {
    const MediaAsset& asset;
    std::size_t track;
    int targetRate;
    int channels;
    std::uint64_t maximumFrames;
    std::uint64_t firstFrame;
    IsCancelled isCancelled;

    void poll() const {
        if (isCancelled()) throw ZEBConverterError::cancelled();
    }
};

/// The result of decoding the track.
struct Track {
    bool started = false;
    SoundFormat format;  ///< valid once there are samples
    std::uint64_t samples = 0;
    SoundBytes bytes;
};

void produceAll(SoundResampler& resampler, SoundBytes& bytes, const Request& request) {
    while (resampler.produce(bytes))
        request.poll();
}

void resample(std::span<const float> samples, SoundResampler& resampler, SoundBytes& bytes,
              const Request& request) {
    constexpr std::size_t pieceSize = 16384;  // limits the memory of the resampler for large buffers
    while (!samples.empty()) {
        const auto piece = samples.first(std::min(samples.size(), pieceSize));
        resampler.append(piece);
        request.poll();
        produceAll(resampler, bytes, request);
        samples = samples.subspan(piece.size());
    }
}

/// Returns the next buffer. Damage is treated as the end.
std::optional<SampleBuffer> nextBuffer(SoundReader& reader) {
    try {
        return reader.copyNextSampleBuffer();
    } catch (const MediaError& error) {
        if (error.endsReading()) throw;
        return {};
    }
}

Track decode(const Request& request) {
    Track track;
    const auto reader = request.asset.makeSoundReader(request.track, request.isCancelled);
    track.started = reader->startReading();
    if (!track.started) return track;

    std::optional<SoundResampler> resampler;
    for (;;) {
        request.poll();
        const std::optional<SampleBuffer> buffer = nextBuffer(*reader);
        if (!buffer) break;
        if (buffer->samples.empty()) continue;
        if (!resampler) {
            track.format = {buffer->sampleRate, buffer->channelsPerFrame};
            resampler.emplace(track.format, request.targetRate, request.channels, request.maximumFrames,
                              request.firstFrame);
        }
        track.samples += buffer->samples.size();
        resample(buffer->samples, *resampler, track.bytes, request);
    }
    if (resampler) {
        resampler->finish();
        produceAll(*resampler, track.bytes, request);
    }
    return track;
}

std::string formatLine(const Track& track, const Request& request) {
    const std::uint64_t sourceFrames = SoundResampler::sourceFrames(track.samples, track.format);
    const std::uint64_t frames = SoundResampler::targetFrames(sourceFrames, track.format, request.targetRate);
    return localizedText(
        "log_sound_format_format",
        {static_cast<std::int64_t>(track.format.sampleRate), std::int64_t{track.format.channels},
         static_cast<std::int64_t>(sourceFrames), std::int64_t{request.targetRate},
         std::int64_t{request.channels}, static_cast<std::int64_t>(frames)});
}

}  // namespace

std::size_t nearestTrack(int index, std::size_t count) {
    return std::min(static_cast<std::size_t>(std::max(index, 0)), count - 1);
}

SoundBytes AudioReader::read(const MediaAsset& asset, int targetRate, int channels, int trackIndex,
                             const IsCancelled& isCancelled, const SoundReports& reports,
                             std::uint64_t maximumFrames, std::uint64_t firstFrame) {
    const auto say = [](const std::function<void(const std::string&)>& listener, const std::string& text) {
        if (listener) listener(text);
    };
    const std::size_t count = asset.soundTracks().size();
    if (count == 0) {
        say(reports.logged, localizedText("log_no_sound_track"));
        return {};
    }
    const Request request{asset,
                          nearestTrack(trackIndex, count),
                          targetRate,
                          channels,
                          maximumFrames,
                          firstFrame,
                          isCancelled ? isCancelled : [] { return false; }};
    try {
        Track track = decode(request);
        if (!track.started) {
            say(reports.warned, localizedText("warning_sound_not_started"));
            return {};
        }
        if (track.samples == 0) {
            say(reports.warned, localizedText("warning_sound_empty"));
            return {};
        }
        say(reports.logged, formatLine(track, request));
        return std::move(track.bytes);
    } catch (const MediaError& error) {
        if (error.code() == MediaError::interrupted) throw ZEBConverterError::cancelled();
        throw;
    }
}

bool AudioReader::hasSound(const MediaAsset& asset, int trackIndex, const IsCancelled& isCancelled) {
    const std::size_t count = asset.soundTracks().size();
    if (count == 0) return false;
    try {
        const IsCancelled mayStop = isCancelled ? isCancelled : [] { return false; };
        const auto reader = asset.makeSoundReader(nearestTrack(trackIndex, count), mayStop);
        if (!reader->startReading()) return false;
        for (;;) {
            if (mayStop()) throw ZEBConverterError::cancelled();
            const std::optional<SampleBuffer> buffer = nextBuffer(*reader);
            if (!buffer) return false;
            if (!buffer->samples.empty()) return true;
        }
    } catch (const MediaError& error) {
        if (error.code() == MediaError::interrupted) throw ZEBConverterError::cancelled();
        throw;
    }
}

}  // namespace zeb
