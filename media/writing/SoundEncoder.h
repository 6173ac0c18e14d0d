#pragma once

#include <cstdint>
#include <span>

#include "media/FilmWriter.h"
#include "media/writing/StreamEncoder.h"

namespace zeb::ffmpeg {

/// The sound stream of a video: converts 8-bit samples to the encoder's format and rate and encodes them.
class SoundEncoder {
public:
    SoundEncoder(Muxer& muxer, const FilmParameters& parameters);

    void add(std::span<const std::uint8_t> samples);
    void finish(const std::function<bool()>& isCancelled);

    StreamEncoder& stream() { return m_encoder; }
    const StreamEncoder& stream() const { return m_encoder; }

private:
    /// Converts `samples` and queues them; without samples, the remainder in the resampler.
    void convert(std::span<const std::uint8_t> samples);
    /// Encodes queued samples in frames of the encoder's size; with `isEnd` also a shorter last frame.
    void encodeQueued(bool isEnd);
    Frame makeSamples(int count) const;

    const FilmParameters m_parameters;
    StreamEncoder m_encoder;
    Resampler m_resampler;
    AudioFifo m_queue;
    std::int64_t m_encoded = 0;  ///< time of the next sample, in samples
};

}  // namespace zeb::ffmpeg
