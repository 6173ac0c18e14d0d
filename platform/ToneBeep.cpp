#include "platform/ToneBeep.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zeb {
namespace {

constexpr int rate = 48000;
constexpr int frames = rate * 18 / 100;
constexpr double pitch = 587.33;  // Hz
constexpr double level = 0.35;

/// A tone with a little of its third harmonic that swells within a few milliseconds and dies away.
SampledSound tone() {
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

}  // namespace

ToneBeep::ToneBeep(AudioOutput& output)
    : m_output(output), m_tone(std::make_shared<const SampledSound>(tone())) {}

void ToneBeep::beep() {
    m_output.start(std::make_shared<SampledSoundSource>(m_tone), {});
}

}  // namespace zeb
