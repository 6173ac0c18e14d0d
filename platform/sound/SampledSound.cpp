#include "platform/sound/SampledSound.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zeb {

SampledSound errorTone() {
    constexpr int rate = 48000;
    constexpr int frames = rate * 18 / 100;
    constexpr double pitch = 587.33;  // Hz
    constexpr double level = 0.35;

    SampledSound sound{rate, {}};
    sound.samples.reserve(2 * frames);
    for (int i = 0; i < frames; ++i) {
        const double angle = 2 * std::numbers::pi * pitch * i / rate;
        const double place = static_cast<double>(i) / frames;
        const double envelope = std::min(1.0, place * 20) * (1 - place) * (1 - place);
        const auto value =
            static_cast<float>(level * envelope * (0.85 * std::sin(angle) + 0.15 * std::sin(3 * angle)));
        sound.samples.insert(sound.samples.end(), {value, value});
    }
    return sound;
}

std::size_t SampledSoundSource::render(std::span<float> samples) noexcept {
    const auto rest = std::span(m_sound->samples).subspan(m_position);
    const std::size_t count = std::min(rest.size(), samples.size());
    std::copy_n(rest.begin(), count, samples.begin());
    m_position += count;
    return count / 2;
}

}  // namespace zeb
