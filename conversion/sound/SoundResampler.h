#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "conversion/sound/SoundBytes.h"

namespace zeb {

/// How decoded samples lie: channels interleaved, `sampleRate` frames per second.
struct SoundFormat {
    double sampleRate = 44100;  ///< Hz, positive and finite
    int channels = 2;           ///< at least 1

    bool operator==(const SoundFormat&) const = default;
};

/// Turns 32-bit float samples into unsigned 8-bit sound of another rate and channel count while they arrive.
///
/// Output frame i lies at source position i x source rate / target rate (double precision) and is
/// interpolated linearly between its two neighbours (single precision); behind the last source frame that
/// frame is held. Stereo becomes mono as the mean, mono becomes stereo twice, otherwise output channel c is
/// source channel c (the last one when there are fewer). A value v becomes the byte v x 127 + 128, cut
/// off; 1.0 and above 255, -1.0 and below 1; what is not a number 128.
///
/// Use: `append` some samples, `produce` until it answers false, again; at the end `finish` and `produce`
/// until it answers false. The result does not depend on how the samples are divided. Only samples that a
/// later output frame still needs are kept: after `produce` has answered false that is one source frame and a
/// bit.
class SoundResampler {
public:
    /// Output frames that one call of `produce` makes at most: well below a millisecond of work.
    static constexpr std::int64_t framesPerStep = 4096;

    /// `channels`: of the output, 1 or 2. Output beyond `maximumFrames` frames is dropped.
    SoundResampler(SoundFormat source, int targetRate, int channels, std::uint64_t maximumFrames);

    void append(std::span<const float> samples);
    void finish();
    /// Appends the next frames to `output`; false when none could be made.
    bool produce(SoundBytes& output);

    /// Source frames that a row of samples holds; an incomplete one at the end does not count.
    static std::uint64_t sourceFrames(std::uint64_t samples, const SoundFormat& source);
    /// Frames that so many source frames become, were there no maximum. Throws `MediaError` beyond 64 bits.
    static std::uint64_t targetFrames(std::uint64_t sourceFrames, const SoundFormat& source, int targetRate);

private:
    double position(std::int64_t targetFrame) const {
        return static_cast<double>(targetFrame) * m_source.sampleRate / m_targetRate;
    }
    std::int64_t interpolatedEnd(std::int64_t end) const;
    void dropUsedFrames();
    void interpolate(std::int64_t end);
    template <int knownSourceChannels, int channels>
    void interpolateAs(std::int64_t end, std::uint8_t* bytes) const;
    void holdLastFrame(std::span<std::uint8_t> bytes) const;
    std::size_t byteCount(std::int64_t frames) const { return static_cast<std::size_t>(frames * m_channels); }

    SoundFormat m_source;
    double m_targetRate;
    int m_channels;
    std::int64_t m_limit;          ///< output frames at most
    std::int64_t m_next = 0;       ///< the next output frame
    std::uint64_t m_received = 0;  ///< samples so far
    std::int64_t m_frames = 0;     ///< whole source frames so far
    bool m_finished = false;
    std::vector<float> m_pending;  ///< samples from source frame m_firstPending on
    std::int64_t m_firstPending = 0;
    std::vector<std::uint8_t> m_bytes;  ///< one step's output
};

}  // namespace zeb
