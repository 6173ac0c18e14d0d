#pragma once

#include <memory>

#include "platform/AudioOutput.h"
#include "platform/SampledSound.h"
#include "platform/SystemBeep.h"

namespace zeb {

/// A short generated tone. Many desktops have no bell, or keep it silent.
class ToneBeep final : public SystemBeep {
public:
    explicit ToneBeep(AudioOutput& output);

    void beep() override;

private:
    AudioOutput& m_output;
    std::shared_ptr<const SampledSound> m_tone;
};

}  // namespace zeb
