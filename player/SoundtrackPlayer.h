#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "format/ZEBReader.h"
#include "platform/sound/AudioOutput.h"
#include "platform/tasks/Clock.h"
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

    /// The movie whose sound it is. `totalFrames` is 0 if unknown: then its sound is as long as it is stored.
    struct Movie {
        std::int64_t totalFrames = 0;
        int fps = 1;
    };

    /// Plays the sound of frame `frame` at `moment`, and on from there to the movie's end, in place of what
    /// is playing. Behind the last frame the movie begins again, if it loops; if not, there is nothing to
    /// play.
    void start(std::int64_t frame, const Movie& movie, Clock::Instant moment);
    /// Whether the pictures begin again at the movie's end, at once for what is playing.
    void setLoops(bool loops);
    /// The pictures have begun again while the sound was playing.
    void picturesBeganAgain();
    /// Whether nothing plays, because the sound has come to its end or was not started.
    bool hasEnded() const { return !m_playing || m_playing->hasEnded(); }
    void pause();
    /// Stops and forgets the soundtrack.
    void teardown();

private:
    void setLastPass();

    AudioOutput& m_output;
    const Clock& m_clock;
    std::shared_ptr<const Soundtrack> m_soundtrack;
    std::shared_ptr<SoundtrackSource> m_playing;
    bool m_loops = false;
    std::int64_t m_pass = 0;  ///< the pass of `m_playing` that the pictures are in; -1 just before its first
    std::shared_ptr<std::atomic<bool>> m_hasComplained;  ///< of a device that cannot play
};

}  // namespace zeb
