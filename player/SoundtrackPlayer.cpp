#include "player/SoundtrackPlayer.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <utility>

#include "player/PlaybackPeriod.h"

namespace zeb {
namespace {

/// The pace of the samples at which the sound keeps up with the pictures.
int paceOf(const Soundtrack& soundtrack, int fps) {
    const auto shown = std::chrono::duration<double>(playbackPeriod(fps)).count();
    // Above 1000 frames per second pictures come as fast as they can; nothing to keep up with.
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

void SoundtrackPlayer::start(std::int64_t frame, int fps, bool loops, Clock::Instant moment) {
    pause();
    if (!m_soundtrack) return;
    const std::int64_t length = SoundtrackSource::frameCount(*m_soundtrack);
    if (length == 0) return;
    const double position = static_cast<double>(frame) / std::max(fps, 1) * m_soundtrack->sampleRate;
    auto first = static_cast<std::int64_t>(std::clamp(position, 0.0, 0x1p62));
    if (first >= length) {
        if (!loops) return;
        first %= length;
    }
    m_playing = std::make_shared<SoundtrackSource>(m_soundtrack, first, loops, paceOf(*m_soundtrack, fps),
                                                   m_clock, moment);
    m_output.start(m_playing, [complained = m_hasComplained](const std::string& error) {
        if (!complained->exchange(!error.empty()) && !error.empty())
            std::printf("Audio engine start failed: %s\n", error.c_str());
    });
}

void SoundtrackPlayer::pause() {
    if (const auto playing = std::exchange(m_playing, {})) m_output.stop(*playing);
}

void SoundtrackPlayer::teardown() {
    pause();
    m_soundtrack.reset();
}

}  // namespace zeb
