#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "format/ZEBReader.h"
#include "platform/AudioOutput.h"
#include "platform/Clock.h"
#include "player/SoundtrackSource.h"

namespace zeb {

/// Plays the soundtrack of one movie in step with its pictures. Main thread.
///
/// Pictures are paced by whole milliseconds, so most movies run a little fast: 33 ms instead of 33.3 at 30
/// frames per second. The sound is played faster by the same ratio and follows the clock that paces the
/// pictures, so that it stays in step however long the movie is.
class SoundtrackPlayer {
public:
    /// `clock` has to outlive what `output` plays.
    SoundtrackPlayer(AudioOutput& output, const Clock& clock);
    ~SoundtrackPlayer();
    SoundtrackPlayer(const SoundtrackPlayer&) = delete;
    SoundtrackPlayer& operator=(const SoundtrackPlayer&) = delete;

    void setSoundtrack(std::shared_ptr<const Soundtrack> soundtrack);

    /// Plays the sound of frame `frame` of a movie with `fps` frames per second at `moment`, and on from
    /// there, in place of what is playing. With `loops` that part is repeated, and a frame behind the end is
    /// taken modulo the length; without it there is nothing to play there.
    void start(std::int64_t frame, int fps, bool loops, Clock::Instant moment);
    void pause();
    /// Stops and forgets the soundtrack.
    void teardown();

private:
    AudioOutput& m_output;
    const Clock& m_clock;
    std::shared_ptr<const Soundtrack> m_soundtrack;
    std::shared_ptr<SoundtrackSource> m_playing;
    std::shared_ptr<std::atomic<bool>> m_hasComplained;  ///< of a device that cannot play
};

}  // namespace zeb
