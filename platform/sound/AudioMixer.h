#pragma once

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "platform/sound/AudioOutput.h"

namespace zeb {

/// Mixes all playing sources, independent of a device. Callable from any thread; the lock is held while one
/// buffer is mixed.
///
/// A single source passes unchanged. Samples and sums are limited to -1 ... 1; NaN becomes silence.
class AudioMixer {
public:
    AudioMixer();
    ~AudioMixer();
    AudioMixer(const AudioMixer&) = delete;
    AudioMixer& operator=(const AudioMixer&) = delete;

    /// Starts rendering at `rate` frames per second; sources are converted to this rate. Before this call,
    /// started sources wait.
    void resume(int rate);
    /// Suspends rendering if nothing has played for `frames` frames; returns false otherwise.
    bool suspendIfSilentFor(std::int64_t frames);

    void start(std::shared_ptr<AudioSource> source, AudioOutput::Finished finished);
    void stop(const AudioSource& source);
    /// Removes all sources and reports `error` to them.
    void dropAll(const std::string& error);
    /// Removes all sources without a report.
    void clear();

    /// Fills `samples` (interleaved left and right) and calls `finished` of the sources that ended in it.
    void render(std::span<float> samples) noexcept;

    /// Returns true if a source plays or waits.
    bool isPlaying() const;
    /// Frames rendered since the last source ended.
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
