#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/AudioSource.h"
#include "platform/Media.h"

namespace zeb {

/// A short sound in memory.
struct SampledSound {
    int sampleRate = 0;          ///< frames per second
    std::vector<float> samples;  ///< interleaved left and right
};

/// The longest sound that `readSampledSound` takes, in seconds.
inline constexpr int longestSampledSound = 30;

/// Reads the first sound track of the file at `path`. A single channel is heard on both sides; of more than
/// two the first two are. Throws `MediaError` when there is none, it cannot be decoded, is empty or too long.
std::shared_ptr<const SampledSound> readSampledSound(const MediaLibrary& media, const std::string& path);

/// One playing of a sound, from its start to its end. Several may share the sound.
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
