#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/AudioSource.h"

namespace zeb {

/// The system's sound output. All sources that play at a time are heard together, each at its own rate.
/// Callable from any thread; no call waits for a device.
class AudioOutput {
public:
    /// Hears that a source is no longer played. `error` is empty unless there was no device to play it on;
    /// then it is the system's reason. Called once, on any thread, but never inside `start`. Must not throw.
    using Finished = std::function<void(const std::string& error)>;

    virtual ~AudioOutput() = default;

    /// Plays `source` from its next frame on until it ends. A source plays once at a time.
    virtual void start(std::shared_ptr<AudioSource> source, Finished finished) = 0;

    /// Fades `source` out within a few milliseconds; nothing happens when it does not play. The source may be
    /// asked for samples until `finished` has been called.
    virtual void stop(const AudioSource& source) = 0;
};

}  // namespace zeb
