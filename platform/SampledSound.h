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

/// Maximum length for `readSampledSound`, in seconds.
inline constexpr int longestSampledSound = 30;

/// Reads the first sound track of the file at `path`. Mono is played on both channels; of more than two
/// channels the first two are used. Throws `MediaError` if there is no track, or if it is empty, too long or
/// not decodable.
std::shared_ptr<const SampledSound> readSampledSound(const MediaLibrary& media, const std::string& path);

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
