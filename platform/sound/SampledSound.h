#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "platform/sound/AudioOutput.h"

namespace zeb {

/// A short sound in memory.
struct SampledSound {
    int sampleRate = 0;          ///< frames per second
    std::vector<float> samples;  ///< interleaved left and right
};

/// Returns the error sound: a note with some of its third harmonic, with an attack of a few milliseconds and
/// a decay. Many desktops have no bell or mute it.
SampledSound errorTone();

/// Plays a sound once from start to end. Several sources may share one sound.
class SampledSoundSource final : public AudioSource {
public:
    explicit SampledSoundSource(std::shared_ptr<const SampledSound> sound) : m_sound(std::move(sound)) {}

    int sampleRate() const noexcept override { return m_sound->sampleRate; }
    std::size_t render(std::span<float> samples) noexcept override;

private:
    std::shared_ptr<const SampledSound> m_sound;
    std::size_t m_position = 0;  ///< in samples
};

}  // namespace zeb
