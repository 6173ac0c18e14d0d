#include "player/SoundtrackPlayer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "player/PlaybackPeriod.h"

namespace zeb {
namespace {

/// Returns the rate in samples per second at which the sound stays in step with the pictures.
int paceOf(const Soundtrack& soundtrack, int fps) {
    const auto shown = std::chrono::duration<double>(playbackPeriod(fps)).count();
    // Above 1000 frames per second pictures are shown as fast as possible, without a fixed rate.
    if (shown <= 0) return soundtrack.sampleRate;
    return static_cast<int>(std::lround(soundtrack.sampleRate * (1.0 / std::max(fps, 1)) / shown));
}

}  // namespace

SoundtrackPlayer::SoundtrackPlayer(AudioOutput& output, const Clock& clock)
    : m_output(output), m_clock(clock), m_hasComplained(std::make_shared<std::atomic<bool>>(false)) {}

SoundtrackPlayer::~SoundtrackPlayer() {
    pause();
}

void SoundtrackPlayer::setSoundtrack(std::shared_ptr<const Soundtrack> soundtrack) {
    m_soundtrack = std::move(soundtrack);
}

void SoundtrackPlayer::start(std::int64_t frame, const Movie& movie, Clock::Instant moment) {
    pause();
    if (!m_soundtrack) return;
    const std::int64_t stored = SoundtrackSource::frameCount(*m_soundtrack);
    if (stored == 0) return;
    const auto soundOf = [&](std::int64_t frames) {
        return static_cast<double>(frames) * m_soundtrack->sampleRate / std::max(movie.fps, 1);
    };
    const double length =
        movie.totalFrames > 0 ? std::max(soundOf(movie.totalFrames), 1.0) : static_cast<double>(stored);
    double first = soundOf(frame);
    m_pass = 0;
    if (first >= length) {
        if (!m_loops) return;
        first = 0;
        m_pass = -1;
    }
    m_playing = std::make_shared<SoundtrackSource>(m_soundtrack, static_cast<std::int64_t>(first), length,
                                                   paceOf(*m_soundtrack, movie.fps), m_clock, moment);
    setLastPass();
    m_output.start(m_playing, [complained = m_hasComplained](const std::string& error) {
        if (!complained->exchange(!error.empty()) && !error.empty())
            std::printf("Audio engine start failed: %s\n", error.c_str());
    });
}

void SoundtrackPlayer::setLoops(bool loops) {
    m_loops = loops;
    setLastPass();
}

void SoundtrackPlayer::picturesBeganAgain() {
    ++m_pass;
    setLastPass();
}

/// Makes the current pass of the pictures the last one unless the movie loops.
void SoundtrackPlayer::setLastPass() {
    if (!m_playing) return;
    if (m_loops)
        m_playing->setLastPass(SoundtrackSource::endless);
    else if (m_pass < 0)
        pause();
    else
        m_playing->setLastPass(m_pass);
}

void SoundtrackPlayer::pause() {
    if (const auto playing = std::exchange(m_playing, {})) m_output.stop(*playing);
}

void SoundtrackPlayer::teardown() {
    pause();
    m_soundtrack.reset();
}

}  // namespace zeb
