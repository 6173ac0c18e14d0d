#pragma once

#include <atomic>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>

#include "format/ZEBReader.h"
#include "platform/sound/AudioOutput.h"
#include "platform/tasks/Clock.h"

namespace zeb {

/// A movie's sound as an output plays it: from a sample on, in passes. A pass lasts as long as the movie's
/// pictures: sound beyond it is left out, and silence fills it up. The first pass may begin in the middle,
/// the later ones begin at the start. A byte b becomes (b - 128) / 128; a mono track is heard on both sides,
/// of more than two channels the first two.
///
/// Keeps step with a clock: no sound device runs exactly at the rate that it claims, and one that had to wait
/// for the processor goes on where it was. Small differences change the pace by a little that nobody hears,
/// larger ones make it leave out what is late. What begins in the middle, where a wave would else jump, is
/// faded over 3 ms.
class SoundtrackSource final : public AudioSource {
public:
    /// For `setLastPass`: no pass is the last one.
    static constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();

    /// `first`: a frame of the soundtrack, below `length`, to be heard at `begin` by `clock`. `length`:
    /// frames of a pass, at least 1; the ends of passes are rounded to whole frames each, so that no error
    /// adds up. `pace`: frames per second. The first pass is the last one unless `setLastPass` says
    /// otherwise.
    SoundtrackSource(std::shared_ptr<const Soundtrack> soundtrack, std::int64_t first, double length,
                     int pace, const Clock& clock, Clock::Instant begin);

    static std::int64_t frameCount(const Soundtrack& soundtrack);

    /// Ends the sound with the end of pass `pass`, counted from 0, or of the current one if that is later.
    /// Does nothing after the end. Callable from any thread, as `hasEnded` is.
    void setLastPass(std::int64_t pass) noexcept;
    bool hasEnded() const noexcept { return m_lastPass == ended; }

    int sampleRate() const noexcept override { return m_pace; }
    std::size_t render(std::span<float> samples) noexcept override;

private:
    void keepStep() noexcept;
    void leaveOut(double seconds) noexcept;
    bool isThere() noexcept;
    std::int64_t lengthOf(std::int64_t pass) const noexcept;
    float sample(std::int64_t frame, std::size_t channel) const noexcept;

    static constexpr std::int64_t ended = -1;

    std::shared_ptr<const Soundtrack> m_soundtrack;
    std::int64_t m_end;  ///< of what is stored
    double m_length;
    int m_nominalPace;
    const Clock& m_clock;
    Clock::Instant m_begin;

    std::atomic<std::int64_t> m_lastPass = 0;
    std::int64_t m_pass = 0;
    std::int64_t m_passLength;
    std::int64_t m_next;  ///< within the pass
    int m_pace;
    std::int64_t m_silence = 0;  ///< frames before the first
    std::int64_t m_passed = 0;   ///< frames played or left out

    std::int64_t m_fadeLength;
    std::int64_t m_faded;                    ///< frames of the fade that have been played
    std::optional<std::int64_t> m_fadedOut;  ///< the next frame of what fades out meanwhile, within its pass

    // In seconds; the lead is how far the frames handed out are before the clock.
    std::optional<double> m_firstTime;
    bool m_isCorrecting = false;
    double m_lateness = 0;  ///< of the first frame
    double m_lastTime = 0;
    double m_meanLead = 0;
    double m_usualLead = 0;  ///< what the device keeps in store
};

}  // namespace zeb
