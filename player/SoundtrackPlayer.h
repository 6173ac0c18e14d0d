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
/// Frame periods are whole milliseconds, so most movies play slightly too fast: 33 ms instead of 33.3 at 30
/// frames per second. The sound is sped up by the same ratio and follows the clock of the pictures, so that
/// it stays in step in movies of any length.
class SoundtrackPlayer {
public:
    /// `clock` must outlive the sources played by `output`.
    SoundtrackPlayer(AudioOutput& output, const Clock& clock);
    ~SoundtrackPlayer();
    SoundtrackPlayer(const SoundtrackPlayer&) = delete;
    SoundtrackPlayer& operator=(const SoundtrackPlayer&) = delete;

    void setSoundtrack(std::shared_ptr<const Soundtrack> soundtrack);

    /// The movie of the sound. If `totalFrames` is 0 (unknown), the sound has its stored length.
    struct Movie {
        std::int64_t totalFrames = 0;
        int fps = 1;
    };

    /// Replaces the playing sound by the sound of frame `frame` at `moment` and plays on to the end of the
    /// movie. Past the last frame a looping movie starts again; otherwise nothing is played.
    void start(std::int64_t frame, const Movie& movie, Clock::Instant moment);
    /// Sets whether the pictures start again at the end of the movie. Also applies to the playing sound.
    void setLoops(bool loops);
    /// Must be called when the pictures have started again while the sound was playing.
    void picturesBeganAgain();
    /// Whether no sound is playing, because it has ended or was not started.
    bool hasEnded() const { return !m_playing || m_playing->hasEnded(); }
    void pause();
    /// Stops and releases the soundtrack.
    void teardown();

private:
    void setLastPass();

    AudioOutput& m_output;
    const Clock& m_clock;
    std::shared_ptr<const Soundtrack> m_soundtrack;
    std::shared_ptr<SoundtrackSource> m_playing;
    bool m_loops = false;
    std::int64_t m_pass = 0;  ///< pass of `m_playing` shown by the pictures; -1 just before its first
    std::shared_ptr<std::atomic<bool>> m_hasComplained;  ///< about a device that cannot play
};

}  // namespace zeb
