#include "player/SoundtrackSource.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace zeb {
namespace {

// In seconds.
constexpr double mostOutOfStep = 0.04;  // maximum offset; above it lip sync is visibly lost
constexpr double settling = 1;          // until the buffering of the device is known
constexpr double smoothing = 2;         // because devices request samples in bursts
constexpr double tolerance = 0.015;     // inaudible
constexpr double correction = 10;       // time in which a small offset is corrected

constexpr double mostBending = 0.005;  // maximum change of the pace, 1/11 of a semitone

}  // namespace

SoundtrackSource::SoundtrackSource(std::shared_ptr<const Soundtrack> soundtrack, std::int64_t first,
                                   double length, int pace, const Clock& clock, Clock::Instant begin)
    : m_soundtrack(std::move(soundtrack)),
      m_end(frameCount(*m_soundtrack)),
      m_length(length),
      m_nominalPace(pace),
      m_clock(clock),
      m_begin(begin),
      m_passLength(lengthOf(0)),
      m_next(first),
      m_pace(pace),
      m_fadeLength(std::max(1, pace * 3 / 1000)),
      m_faded(first > 0 ? 0 : m_fadeLength) {}

std::int64_t SoundtrackSource::frameCount(const Soundtrack& soundtrack) {
    if (soundtrack.audioChannels < 1) return 0;
    return static_cast<std::int64_t>(soundtrack.bytes.size()) / soundtrack.audioChannels;
}

void SoundtrackSource::setLastPass(std::int64_t pass) noexcept {
    std::int64_t last = m_lastPass;
    while (last != ended && !m_lastPass.compare_exchange_weak(last, pass)) {
    }
}

std::size_t SoundtrackSource::render(std::span<float> samples) noexcept {
    keepStep();
    const std::size_t rightChannel = m_soundtrack->audioChannels > 1 ? 1 : 0;
    const std::size_t room = samples.size() / 2;
    std::size_t done = 0;
    for (; done < room && m_silence > 0; ++done, --m_silence)
        samples[2 * done] = samples[2 * done + 1] = 0;
    const std::size_t silent = done;
    for (; done < room && isThere(); ++done) {
        float* const out = samples.data() + 2 * done;
        out[0] = sample(m_next, 0);
        out[1] = sample(m_next, rightChannel);
        ++m_next;
        if (m_faded == m_fadeLength) continue;
        const float share = static_cast<float>(m_faded++) / static_cast<float>(m_fadeLength);
        for (const std::size_t side : {0U, 1U}) {
            const float old = m_fadedOut ? sample(*m_fadedOut, side == 0 ? 0 : rightChannel) : 0;
            out[side] = out[side] * share + old * (1 - share);
        }
        if (m_fadedOut) ++*m_fadedOut;
    }
    m_passed += static_cast<std::int64_t>(done - silent);
    return done;
}

/// Returns whether there is a frame to play; past the end of a pass, continues with the next pass.
bool SoundtrackSource::isThere() noexcept {
    while (m_next >= m_passLength) {
        std::int64_t last = m_lastPass;
        if (m_pass >= last) {
            // Another thread may change the last pass at the same time.
            if (last == ended || m_lastPass.compare_exchange_strong(last, ended)) return false;
            continue;
        }
        m_next -= m_passLength;
        m_passLength = lengthOf(++m_pass);
    }
    return true;
}

std::int64_t SoundtrackSource::lengthOf(std::int64_t pass) const noexcept {
    const auto begin = [this](std::int64_t number) {
        return std::llround(static_cast<double>(number) * m_length);
    };
    return begin(pass + 1) - begin(pass);
}

float SoundtrackSource::sample(std::int64_t frame, std::size_t channel) const noexcept {
    if (frame >= m_end) return 0;
    const auto channels = static_cast<std::size_t>(m_soundtrack->audioChannels);
    const std::uint8_t byte = m_soundtrack->bytes[static_cast<std::size_t>(frame) * channels + channel];
    return static_cast<float>(byte - 128) * 0.0078125F;
}

void SoundtrackSource::keepStep() noexcept {
    const double time = std::chrono::duration<double>(m_clock.now() - m_begin).count();
    const double lead = static_cast<double>(m_passed) / m_nominalPace - time;
    if (m_silence > 0) return;
    if (!m_firstTime) {
        // The sound starts with a later picture: wait for it.
        if (lead > mostOutOfStep) {
            m_silence = static_cast<std::int64_t>(lead * m_nominalPace);
            return;
        }
        m_firstTime = m_lastTime = time;
        // A device that had to be opened starts late.
        if (lead < -mostOutOfStep)
            leaveOut(-lead);
        else
            m_lateness = -lead;
        return;
    }
    const double age = time - *m_firstTime;
    if (age <= 0) return;
    m_meanLead += (lead - m_meanLead) * std::min(1.0, (time - m_lastTime) / std::min(age, smoothing));
    m_lastTime = time;
    if (age < settling) {
        m_usualLead = m_meanLead + m_lateness;
        return;
    }
    const double error = m_meanLead - m_usualLead;
    if (error < -mostOutOfStep) {
        leaveOut(-error);
        m_meanLead = m_usualLead;
    }
    // Hysteresis: a correction continues until the offset is small.
    m_isCorrecting = std::abs(error) > (m_isCorrecting ? tolerance / 8 : tolerance);
    const double bending = m_isCorrecting ? std::clamp(error / correction, -mostBending, mostBending) : 0;
    m_pace = static_cast<int>(std::lround(m_nominalPace * (1 - bending)));
}

void SoundtrackSource::leaveOut(double seconds) noexcept {
    const auto frames = static_cast<std::int64_t>(seconds * m_nominalPace);
    if (m_passed > 0) m_fadedOut = m_next;
    m_faded = 0;
    m_next += frames;
    m_passed += frames;
}

}  // namespace zeb
