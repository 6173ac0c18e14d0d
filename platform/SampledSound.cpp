#include "platform/SampledSound.h"

#include <algorithm>
#include <cmath>

namespace zeb {

std::shared_ptr<const SampledSound> readSampledSound(const MediaLibrary& media, const std::string& path) {
    const IsCancelled never = [] { return false; };
    const auto asset = media.open(path, never);
    if (asset->soundTracks().empty()) throw MediaError(MediaError::cannotDecode, {"error_media_no_sound"});
    const auto reader = asset->makeSoundReader(0, never);
    if (!reader->startReading())
        throw MediaError(MediaError::cannotDecode, {"error_media_sound_undecodable"});

    SampledSound sound;
    while (const auto buffer = reader->copyNextSampleBuffer()) {
        const auto channels = static_cast<std::size_t>(buffer->channelsPerFrame);
        sound.sampleRate = static_cast<int>(std::lround(buffer->sampleRate));
        for (std::size_t at = 0; at + channels <= buffer->samples.size(); at += channels) {
            sound.samples.push_back(buffer->samples[at]);
            sound.samples.push_back(buffer->samples[at + std::min<std::size_t>(channels - 1, 1)]);
        }
        if (sound.samples.size() / 2 / longestSampledSound > static_cast<std::size_t>(sound.sampleRate))
            throw MediaError(MediaError::cannotDecode, {"error_media_long_sound"});
    }
    if (sound.samples.empty()) throw MediaError(MediaError::cannotDecode, {"error_media_empty_sound"});
    return std::make_shared<const SampledSound>(std::move(sound));
}

std::size_t SampledSoundSource::render(std::span<float> samples) noexcept {
    const auto rest = std::span(m_sound->samples).subspan(m_position);
    const std::size_t count = std::min(rest.size(), samples.size());
    std::copy_n(rest.begin(), count, samples.begin());
    m_position += count;
    return count / 2;
}

}  // namespace zeb
