#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace zeb {

/// A source of sound. After a source was given to an output, `render` is called on the thread of the output.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    /// Frames per second, at least 1. Called before each buffer; the rate may change slightly while the
    /// source plays.
    virtual int sampleRate() const noexcept = 0;

    /// Writes the next frames: interleaved left and right, nominally -1 ... 1, two floats per frame.
    /// `samples` has room for whole frames. Returns the number of frames written; fewer than fit means that
    /// the source has ended, and `render` is not called again. Must neither wait nor read files.
    virtual std::size_t render(std::span<float> samples) noexcept = 0;
};

/// The system's sound output. Sources that play at the same time are mixed; each has a separate sample rate.
/// Callable from any thread; no call waits for a device.
class AudioOutput {
public:
    /// Called when a source is no longer played: once, on any thread, never inside `start`. `error` is the
    /// system's reason if there was no device, else empty. Must not throw.
    using Finished = std::function<void(const std::string& error)>;

    virtual ~AudioOutput() = default;

    /// Plays `source` from its next frame to its end. A source must not be started again while it plays.
    virtual void start(std::shared_ptr<AudioSource> source, Finished finished) = 0;

    /// Fades `source` out within a few milliseconds; does nothing if it does not play. `render` of the source
    /// may be called until `finished` has been called.
    virtual void stop(const AudioSource& source) = 0;
};

}  // namespace zeb
