#include "conversion/AudioReader.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <utility>

#include "conversion/SoundResampler.h"
#include "format/ZEBConverterError.h"
#include "platform/LocalizedText.h"

namespace zeb {

namespace {

struct Request {
    const MediaAsset& asset;
    std::size_t track;
    int targetRate;
    int channels;
    std::uint64_t maximumFrames;
    IsCancelled isCancelled;

    void poll() const {
        if (isCancelled()) throw ZEBConverterError::cancelled();
    }
};

/// What decoding the track once from start to end has given.
struct Pass {
    bool started = false;
    SoundFormat format;  ///< as last reported
    std::uint64_t samples = 0;
    bool formatChanged = false;  ///< after the first samples: `bytes` holds nothing then
    SoundBytes bytes;
};

/// The format of a buffer; nothing when it does not say a usable one.
std::optional<SoundFormat> reportedFormat(const SampleBuffer& buffer) {
    constexpr double highestRate = 2147483647;
    if (!(buffer.sampleRate > 0 && buffer.sampleRate <= highestRate) || buffer.channelsPerFrame < 1)
        return {};
    return SoundFormat{buffer.sampleRate, buffer.channelsPerFrame};
}

void produceAll(SoundResampler& resampler, SoundBytes& bytes, const Request& request) {
    while (resampler.produce(bytes))
        request.poll();
}

void resample(std::span<const float> samples, SoundResampler& resampler, SoundBytes& bytes,
              const Request& request) {
    constexpr std::size_t pieceSize = 16384;  // bounds what the resampler keeps, however large a buffer is
    while (!samples.empty()) {
        const auto piece = samples.first(std::min(samples.size(), pieceSize));
        resampler.append(piece);
        request.poll();
        produceAll(resampler, bytes, request);
        samples = samples.subspan(piece.size());
    }
}

/// The next buffer; damage counts as the end.
std::optional<SampleBuffer> nextBuffer(SoundReader& reader) {
    try {
        return reader.copyNextSampleBuffer();
    } catch (const MediaError& error) {
        if (error.code() != MediaError::cannotDecode) throw;
        return {};
    }
}

/// Decodes the track once; with a `fixedFormat` that one holds, whatever the buffers report.
Pass decodeOnce(const Request& request, const std::optional<SoundFormat>& fixedFormat) {
    Pass pass;
    const auto reader = request.asset.makeSoundReader(request.track, request.isCancelled);
    pass.started = reader->startReading();
    if (!pass.started) return pass;

    if (fixedFormat) pass.format = *fixedFormat;
    std::optional<SoundResampler> resampler;
    for (;;) {
        request.poll();
        const std::optional<SampleBuffer> buffer = nextBuffer(*reader);
        if (!buffer) break;
        const SoundFormat format = fixedFormat ? *fixedFormat : reportedFormat(*buffer).value_or(pass.format);
        if (format != pass.format && pass.samples > 0) {
            pass.formatChanged = true;
            resampler.reset();
            pass.bytes = {};
        }
        pass.format = format;
        pass.samples += buffer->samples.size();
        if (pass.formatChanged || buffer->samples.empty()) continue;
        if (!resampler) {
            resampler.emplace(pass.format, request.targetRate, request.channels, request.maximumFrames);
        }
        resample(buffer->samples, *resampler, pass.bytes, request);
    }
    if (resampler) {
        resampler->finish();
        produceAll(*resampler, pass.bytes, request);
    }
    return pass;
}

std::size_t nearestTrack(int index, std::size_t count) {
    return std::min(static_cast<std::size_t>(std::max(index, 0)), count - 1);
}

std::string formatLine(const Pass& pass, const Request& request) {
    const std::uint64_t sourceFrames = SoundResampler::sourceFrames(pass.samples, pass.format);
    const std::uint64_t frames = SoundResampler::targetFrames(sourceFrames, pass.format, request.targetRate);
    return localizedText(
        "log_sound_format_format",
        {static_cast<std::int64_t>(pass.format.sampleRate), std::int64_t{pass.format.channels},
         static_cast<std::int64_t>(sourceFrames), std::int64_t{request.targetRate},
         std::int64_t{request.channels}, static_cast<std::int64_t>(frames)});
}

}  // namespace

SoundBytes AudioReader::read(const MediaAsset& asset, int targetRate, int channels, int trackIndex,
                             const IsCancelled& isCancelled, const SoundReports& reports,
                             std::uint64_t maximumFrames) {
    const auto say = [](const std::function<void(const std::string&)>& listener, const std::string& text) {
        if (listener) listener(text);
    };
    const std::size_t count = asset.soundTracks().size();
    if (count == 0) {
        say(reports.logged, localizedText("log_no_sound_track"));
        return {};
    }
    const Request request{asset,         nearestTrack(trackIndex, count),
                          targetRate,    channels,
                          maximumFrames, isCancelled ? isCancelled : [] { return false; }};
    try {
        Pass pass = decodeOnce(request, {});
        if (pass.formatChanged) {
            const SoundFormat last = pass.format;
            pass = decodeOnce(request, last);
        }
        if (!pass.started) {
            say(reports.warned, localizedText("warning_sound_not_started"));
            return {};
        }
        if (pass.samples == 0) {
            say(reports.warned, localizedText("warning_sound_empty"));
            return {};
        }
        say(reports.logged, formatLine(pass, request));
        return std::move(pass.bytes);
    } catch (const MediaError& error) {
        if (error.code() == MediaError::interrupted) throw ZEBConverterError::cancelled();
        throw;
    }
}

bool AudioReader::hasSound(const MediaAsset& asset, int targetRate, int trackIndex,
                           const IsCancelled& isCancelled) {
    // So many that a change of rate or channels further on cannot make them none.
    constexpr std::uint64_t plenty = 1024;
    const std::size_t count = asset.soundTracks().size();
    if (count == 0) return false;
    try {
        const IsCancelled mayStop = isCancelled ? isCancelled : [] { return false; };
        const auto reader = asset.makeSoundReader(nearestTrack(trackIndex, count), mayStop);
        if (!reader->startReading()) return false;
        SoundFormat format;
        std::uint64_t samples = 0;
        std::uint64_t frames = 0;
        while (frames < plenty) {
            if (mayStop()) throw ZEBConverterError::cancelled();
            const std::optional<SampleBuffer> buffer = nextBuffer(*reader);
            if (!buffer) break;
            format = reportedFormat(*buffer).value_or(format);
            samples += buffer->samples.size();
            frames = SoundResampler::targetFrames(SoundResampler::sourceFrames(samples, format), format,
                                                  targetRate);
        }
        return frames > 0;
    } catch (const MediaError& error) {
        if (error.code() == MediaError::interrupted) throw ZEBConverterError::cancelled();
        throw;
    }
}

}  // namespace zeb
