#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "format/ZEBReader.h"
#include "platform/AudioSource.h"
#include "platform/Clock.h"

namespace zeb {

/// Part of a movie's sound as an output plays it: from a sample on to the end, once or again and again. A
/// byte b becomes (b - 128) / 128; a mono track is heard on both sides, of more than two channels the first
/// two.
///
/// Keeps step with a clock: no sound device runs exactly at the rate that it claims, and one that had to wait
/// for the processor goes on where it was. Small differences change the pace by a little that nobody hears,
/// larger ones make it leave out what is late. What begins in the middle, where a wave would else jump, is
/// faded over 3 ms.
class SoundtrackSource final : public AudioSource {
public:
    /// `first`: a frame of the soundtrack, below `frameCount`, to be heard at `begin` by `clock`. `pace`:
    /// frames per second.
    SoundtrackSource(std::shared_ptr<const Soundtrack> soundtrack, std::int64_t first, bool loops, int pace,
                     const Clock& clock, Clock::Instant begin);

    static std::int64_t frameCount(const Soundtrack& soundtrack);

    int sampleRate() const noexcept override { return m_pace; }
    std::size_t render(std::span<float> samples) noexcept override;

private:
    void keepStep() noexcept;
    void leaveOut(double seconds) noexcept;
    bool isThere(std::int64_t& frame) const noexcept;
    float sample(std::int64_t frame, std::size_t channel) const noexcept;

    std::shared_ptr<const Soundtrack> m_soundtrack;
    std::int64_t m_first;
    std::int64_t m_end;
    bool m_loops;
    int m_nominalPace;
    const Clock& m_clock;
    Clock::Instant m_begin;

    std::int64_t m_next;
    int m_pace;
    std::int64_t m_silence = 0;  ///< frames before the first
    std::int64_t m_passed = 0;   ///< frames played or left out

    std::int64_t m_fadeLength;
    std::int64_t m_faded;                    ///< frames of the fade that have been played
    std::optional<std::int64_t> m_fadedOut;  ///< the next frame of what fades out meanwhile

    // In seconds; the lead is how far the frames handed out are before the clock.
    std::optional<double> m_firstTime;
    bool m_isCorrecting = false;
    double m_lateness = 0;  ///< of the first frame
    double m_lastTime = 0;
    double m_meanLead = 0;
    double m_usualLead = 0;  ///< what the device keeps in store
};

}  // namespace zeb
