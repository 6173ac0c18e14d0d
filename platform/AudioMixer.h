#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/AudioOutput.h"

namespace zeb {

/// The part of a sound output that needs no device: adds up all sources that play. Callable from any thread;
/// the lock is held for as long as the mixing of one buffer takes.
///
/// A source alone passes unchanged but for values beyond -1 ... 1, which are cut off, as sums are. What is
/// not a number becomes silence.
class AudioMixer {
public:
    AudioMixer();
    ~AudioMixer();
    AudioMixer(const AudioMixer&) = delete;
    AudioMixer& operator=(const AudioMixer&) = delete;

    /// From now on `render` makes sound, at `rate` frames per second; sources are converted to it. Until then
    /// what is started waits.
    void resume(int rate);
    /// Goes back to waiting if nothing has played for `frames` frames; false otherwise.
    bool suspendIfSilentFor(std::int64_t frames);

    void start(std::shared_ptr<AudioSource> source, AudioOutput::Finished finished);
    void stop(const AudioSource& source);
    /// Drops all sources and tells them `error`.
    void dropAll(const std::string& error);
    /// Drops all sources without telling them.
    void clear();

    /// Fills `samples` (interleaved left and right) and tells the sources that ended in it.
    void render(std::span<float> samples) noexcept;

    /// Whether anything plays or waits.
    bool isPlaying() const;
    /// Frames rendered since anything played.
    std::int64_t silentFrames() const;

private:
    class Voice;

    std::vector<std::unique_ptr<Voice>> takeAll();

    mutable std::mutex m_mutex;
    int m_rate = 48000;
    bool m_isSuspended = true;
    std::vector<std::unique_ptr<Voice>> m_voices;
    std::int64_t m_silentFrames = 0;
};

}  // namespace zeb
