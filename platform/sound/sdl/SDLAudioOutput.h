#pragma once

#include <chrono>
#include <memory>

#include "platform/sound/AudioOutput.h"

namespace zeb {

/// The default sound device, through SDL. Other uses of SDL in the process must be on the thread of this
/// object.
///
/// The device is opened when a source starts, and closed, with the connection to the sound server, after a
/// silence of `closeAfter`. Both may take long, so they happen on a separate thread. Without a device,
/// sources finish at once with SDL's reason; the next attempt is made when a source starts at least
/// `retryAfter` later.
class SDLAudioOutput final : public AudioOutput {
public:
    struct Timing {
        std::chrono::milliseconds closeAfter{3000};
        std::chrono::milliseconds retryAfter{5000};
    };

    SDLAudioOutput();
    explicit SDLAudioOutput(Timing timing);
    /// Ends playing sources without a report. Waits until the device is closed, but not for a sound server
    /// that does not respond.
    ~SDLAudioOutput() override;
    SDLAudioOutput(const SDLAudioOutput&) = delete;
    SDLAudioOutput& operator=(const SDLAudioOutput&) = delete;

    void start(std::shared_ptr<AudioSource> source, Finished finished) override;
    void stop(const AudioSource& source) override;

    /// Returns true if a device is open. For diagnosis.
    bool isOpen() const;

private:
    class Engine;
    std::shared_ptr<Engine> m_engine;  ///< shared with the thread, which may outlive this object
};

}  // namespace zeb
