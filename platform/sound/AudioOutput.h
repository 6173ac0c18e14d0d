#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/sound/AudioSource.h"

namespace zeb {

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
