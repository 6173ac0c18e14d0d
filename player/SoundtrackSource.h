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

/// The sound of a movie for an output, from a given sample on, in passes. A pass lasts as long as the
/// pictures of the movie: longer sound is cut, shorter sound is padded with silence. The first pass may start
/// in the middle, later passes start at the beginning. A byte b becomes (b - 128) / 128. A mono track is
/// played on both sides; of more than two channels the first two are played.
///
/// Follows a clock, because no sound device runs exactly at its nominal rate, and a device that had to wait
/// for the processor continues at its old position. Small offsets are corrected by an inaudible change of the
/// pace, larger ones by skipping the late samples. Sound that starts in the middle is faded over 3 ms to
/// avoid a step in the waveform.
class SoundtrackSource final : public AudioSource {
public:
    /// For `setLastPass`: unlimited passes.
    static constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();

    /// `first`: a frame of the soundtrack, below `length`, to be heard at `begin` by `clock`. `length`:
    /// frames per pass, at least 1; each pass end is rounded to a whole frame, so that errors do not
    /// accumulate. `pace`: frames per second. The first pass is the last one until `setLastPass` is called.
    SoundtrackSource(std::shared_ptr<const Soundtrack> soundtrack, std::int64_t first, double length,
                     int pace, const Clock& clock, Clock::Instant begin);

    static std::int64_t frameCount(const Soundtrack& soundtrack);

    /// Ends the sound with the end of pass `pass`, counted from 0, or of the current pass if that is later.
    /// Does nothing after the end. Callable from any thread, like `hasEnded`.
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
    std::int64_t m_end;  ///< of the stored sound
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
    std::int64_t m_passed = 0;   ///< frames played or skipped

    std::int64_t m_fadeLength;
    std::int64_t m_faded;                    ///< frames of the fade already played
    std::optional<std::int64_t> m_fadedOut;  ///< the next frame of the sound that fades out, within its pass

    // In seconds. The lead is the time of the frames handed out minus the clock.
    std::optional<double> m_firstTime;
    bool m_isCorrecting = false;
    double m_lateness = 0;  ///< of the first frame
    double m_lastTime = 0;
    double m_meanLead = 0;
    double m_usualLead = 0;  ///< includes the buffering of the device
};

}  // namespace zeb
