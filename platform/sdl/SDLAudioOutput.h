#pragma once

#include <chrono>
#include <memory>

#include "platform/AudioOutput.h"

namespace zeb {

/// The default sound device through SDL, which must be used for nothing else in the process meanwhile but
/// from the thread that it is used on here.
///
/// The device is opened when something is to be heard and closed, with the connection to the sound server,
/// once nothing has been for `closeAfter`. Both may take long, so they happen on a thread of this object's.
/// Where there is no device, sources finish at once with SDL's reason; another attempt is made when
/// something starts `retryAfter` later.
class SDLAudioOutput final : public AudioOutput {
public:
    struct Timing {
        std::chrono::milliseconds closeAfter{3000};
        std::chrono::milliseconds retryAfter{5000};
    };

    SDLAudioOutput();
    explicit SDLAudioOutput(Timing timing);
    /// Ends what plays without telling it. Waits for the device to be closed, but not for a sound server that
    /// does not answer.
    ~SDLAudioOutput() override;
    SDLAudioOutput(const SDLAudioOutput&) = delete;
    SDLAudioOutput& operator=(const SDLAudioOutput&) = delete;

    void start(std::shared_ptr<AudioSource> source, Finished finished) override;
    void stop(const AudioSource& source) override;

    /// Whether a device is open now. For diagnosis.
    bool isOpen() const;

private:
    class Engine;
    std::shared_ptr<Engine> m_engine;  ///< shared with its thread, which may have to be left behind
};

}  // namespace zeb
