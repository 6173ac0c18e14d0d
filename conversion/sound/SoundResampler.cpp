#include "conversion/sound/SoundResampler.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <limits>

#include "media/Media.h"

namespace zeb {

namespace {

constexpr std::int64_t unlimited = std::numeric_limits<std::int64_t>::max();

/// Clamps without branches. The formula also gives 255 for 1.0 and above.
std::uint8_t byteOf(float value) {
    const float number = value == value ? value : 0.0F;
    const double bounded = std::min(std::max(number, -1.0F), 1.0F);
    return static_cast<std::uint8_t>(static_cast<int>(bounded * 127 + 128));
}

/// Returns the value of output channel `channel` for one source frame.
template <int knownSourceChannels, int channels>
float heard(const float* frame, int sourceChannels, int channel) {
    if constexpr (knownSourceChannels == 2 && channels == 1) return (frame[0] + frame[1]) * 0.5F;
    return frame[std::min(channel, sourceChannels - 1)];
}

}  // namespace

SoundResampler::SoundResampler(SoundFormat source, int targetRate, int channels, std::uint64_t maximumFrames,
                               std::uint64_t firstFrame)
    : m_source(source),
      m_targetRate(targetRate),
      m_channels(channels),
      m_first(static_cast<std::int64_t>(std::min<std::uint64_t>(firstFrame, unlimited))),
      m_limit(m_first + static_cast<std::int64_t>(std::min<std::uint64_t>(
                            maximumFrames, static_cast<std::uint64_t>(unlimited - m_first)))),
      m_bytes(static_cast<std::size_t>(framesPerStep * channels)) {
    assert(source.sampleRate > 0 && std::isfinite(source.sampleRate) && source.channels >= 1);
    assert(targetRate >= 1 && (channels == 1 || channels == 2));
}

std::uint64_t SoundResampler::sourceFrames(std::uint64_t samples, const SoundFormat& source) {
    return samples / static_cast<std::uint64_t>(source.channels);
}

std::uint64_t SoundResampler::targetFrames(std::uint64_t sourceFrames, const SoundFormat& source,
                                           int targetRate) {
    const double frames = std::ceil(targetRate * static_cast<double>(sourceFrames) / source.sampleRate);
    if (!(frames < 0x1p62)) {
        throw MediaError(MediaError::cannotDecode, {"error_source_sound_length"});
    }
    return static_cast<std::uint64_t>(frames);
}

void SoundResampler::append(std::span<const float> samples) {
    assert(!m_finished);
    m_received += samples.size();
    if (m_next >= m_limit) return;  // these samples lie past the limit
    dropUsedFrames();
    m_pending.insert(m_pending.end(), samples.begin(), samples.end());
    m_frames = static_cast<std::int64_t>(sourceFrames(m_received, m_source));
}

void SoundResampler::finish() {
    m_finished = true;
    const std::uint64_t frames = sourceFrames(m_received, m_source);
    if (m_next < m_limit) {
        const std::uint64_t produced = targetFrames(frames, m_source, static_cast<int>(m_targetRate));
        m_limit = std::min(m_limit, static_cast<std::int64_t>(produced));
    }
}

bool SoundResampler::produce(SoundBytes& output) {
    if (m_next >= m_limit || m_frames == 0) return false;
    const std::int64_t begin = m_next;
    const std::int64_t end = begin + std::min(framesPerStep, m_limit - begin);
    const std::int64_t interpolated = interpolatedEnd(end);
    interpolate(interpolated);
    m_next = m_finished ? end : interpolated;
    if (m_finished)
        holdLastFrame(
            std::span(m_bytes).subspan(byteCount(interpolated - begin), byteCount(end - interpolated)));
    const std::int64_t kept = std::clamp(m_first, begin, m_next);
    output.append(std::span(m_bytes).subspan(byteCount(kept - begin), byteCount(m_next - kept)));
    return m_next > begin;
}

/// Returns the first of the output frames m_next ... end whose right neighbour has not arrived yet.
std::int64_t SoundResampler::interpolatedEnd(std::int64_t end) const {
    const auto lastFrame = static_cast<double>(m_frames - 1);
    std::int64_t ready = m_next;  // everything before it is ready
    std::int64_t open = end;      // everything from here on is not ready or not requested
    while (ready < open) {
        const std::int64_t middle = ready + (open - ready) / 2;
        if (position(middle) < lastFrame) {
            ready = middle + 1;
        } else {
            open = middle;
        }
    }
    return ready;
}

/// Drops source frames left of the next output frame, except the last whole one, which may have to be held.
void SoundResampler::dropUsedFrames() {
    const double needed =
        std::min(position(m_next), static_cast<double>(std::max<std::int64_t>(m_frames - 1, 0)));
    const std::int64_t count = static_cast<std::int64_t>(needed) - m_firstPending;
    m_pending.erase(m_pending.begin(), m_pending.begin() + count * m_source.channels);
    m_firstPending += count;
}

template <int knownSourceChannels, int channels>
void SoundResampler::interpolateAs(std::int64_t end, std::uint8_t* bytes) const {
    const int sourceChannels = knownSourceChannels > 0 ? knownSourceChannels : m_source.channels;
    const float* const origin = m_pending.data();
    const double sourceRate = m_source.sampleRate;
    const double targetRate = m_targetRate;
    const auto firstPending = static_cast<double>(m_firstPending);

    // Process small groups in separate steps, so that compilers can vectorise every step except the lookup.
    constexpr int groupSize = 128;
    std::int32_t offsets[groupSize];  // left neighbours, in frames from the first pending one
    float fractions[groupSize];
    float values[groupSize * channels];
    for (std::int64_t begin = m_next; begin < end; begin += groupSize) {
        const auto first = static_cast<double>(begin);
        const int count = static_cast<int>(std::min<std::int64_t>(groupSize, end - begin));
        for (int i = 0; i < count; ++i) {
            // The difference is exact, so the fraction equals that of the position.
            const double place = (first + i) * sourceRate / targetRate - firstPending;
            offsets[i] = static_cast<std::int32_t>(place);
            fractions[i] = static_cast<float>(place - offsets[i]);
        }
        for (int i = 0; i < count; ++i) {
            const float* const left = origin + static_cast<std::ptrdiff_t>(offsets[i]) * sourceChannels;
            const float* const right = left + sourceChannels;
            for (int channel = 0; channel < channels; ++channel) {
                const float from = heard<knownSourceChannels, channels>(left, sourceChannels, channel);
                const float to = heard<knownSourceChannels, channels>(right, sourceChannels, channel);
                values[i * channels + channel] = from + (to - from) * fractions[i];
            }
        }
        for (int i = 0; i < count * channels; ++i)
            bytes[i] = byteOf(values[i]);
        bytes += count * channels;
    }
}

void SoundResampler::interpolate(std::int64_t end) {
    std::uint8_t* const bytes = m_bytes.data();
    const bool stereo = m_channels == 2;
    switch (m_source.channels) {
        case 1:
            stereo ? interpolateAs<1, 2>(end, bytes) : interpolateAs<1, 1>(end, bytes);
            break;
        case 2:
            stereo ? interpolateAs<2, 2>(end, bytes) : interpolateAs<2, 1>(end, bytes);
            break;
        default:
            stereo ? interpolateAs<0, 2>(end, bytes) : interpolateAs<0, 1>(end, bytes);
            break;
    }
}

/// Fills `bytes` with the frames past the last source frame, where both neighbours are the last frame.
void SoundResampler::holdLastFrame(std::span<std::uint8_t> bytes) const {
    const float* const last = m_pending.data() + (m_frames - 1 - m_firstPending) * m_source.channels;
    const bool isMean = m_source.channels == 2 && m_channels == 1;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
        const int channel = static_cast<int>(i) % m_channels;
        const float value = isMean ? heard<2, 1>(last, 2, 0) : heard<0, 2>(last, m_source.channels, channel);
        bytes[i] = byteOf(value + (value - value));  // turns infinity into NaN, as interpolation does
    }
}

}  // namespace zeb
