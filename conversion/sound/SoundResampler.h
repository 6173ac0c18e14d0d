#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "conversion/sound/SoundBytes.h"

namespace zeb {

/// Layout of decoded samples: channels interleaved, `sampleRate` frames per second.
struct SoundFormat {
    double sampleRate = 44100;  ///< Hz, positive and finite
    int channels = 2;           ///< at least 1

    bool operator==(const SoundFormat&) const = default;
};

/// Converts 32-bit float samples to unsigned 8-bit sound with another rate and channel count, incrementally.
///
/// Output frame i is at source position i x source rate / target rate (double precision) and is interpolated
/// linearly between its two neighbours (single precision). Past the last source frame, that frame is held.
/// Stereo becomes mono as the mean, mono becomes stereo by duplication; otherwise output channel c is source
/// channel c (the last one if there are fewer). A value v becomes the byte v x 127 + 128, truncated; 1.0 and
/// above give 255, -1.0 and below give 1, NaN gives 128.
///
/// Usage: `append` samples, call `produce` until it returns false, repeat; at the end call `finish`, then
/// `produce` until it returns false. The result does not depend on how the samples are divided. Only samples
/// needed by later output frames are kept: one source frame and a fraction after `produce` has returned
/// false.
class SoundResampler {
public:
    /// Maximum number of output frames per call of `produce`: well below a millisecond of work.
    static constexpr std::int64_t framesPerStep = 4096;

    /// `channels`: output channels, 1 or 2. Keeps at most `maximumFrames` output frames from `firstFrame` on;
    /// the frames before are computed like the others and dropped.
    SoundResampler(SoundFormat source, int targetRate, int channels, std::uint64_t maximumFrames,
                   std::uint64_t firstFrame = 0);

    void append(std::span<const float> samples);
    void finish();
    /// Appends the next frames to `output`. Returns false if none could be made.
    bool produce(SoundBytes& output);

    /// Returns the number of complete source frames in `samples` samples.
    static std::uint64_t sourceFrames(std::uint64_t samples, const SoundFormat& source);
    /// Returns the number of output frames for `sourceFrames`, without the maximum. Throws `MediaError`
    /// beyond 64 bits.
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
    std::int64_t m_first;          ///< first output frame that is kept
    std::int64_t m_limit;          ///< end of the output frames
    std::int64_t m_next = 0;       ///< the next output frame
    std::uint64_t m_received = 0;  ///< samples so far
    std::int64_t m_frames = 0;     ///< whole source frames so far
    bool m_finished = false;
    std::vector<float> m_pending;  ///< samples from source frame m_firstPending on
    std::int64_t m_firstPending = 0;
    std::vector<std::uint8_t> m_bytes;  ///< one step's output
};

}  // namespace zeb
