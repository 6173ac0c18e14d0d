#include "platform/sound/AudioMixer.h"

#include <algorithm>
#include <array>
#include <cassert>
#include <optional>
#include <utility>

#include "platform/sound/RateConverter.h"

namespace zeb {
namespace {

constexpr std::size_t framesAtOnce = 512;
constexpr int fadesPerSecond = 200;  // a stopped source fades for 5 ms, to avoid a click

}  // namespace

/// A source that is being played.
class AudioMixer::Voice {
public:
    Voice(std::shared_ptr<AudioSource> source, AudioOutput::Finished finished)
        : m_source(std::move(source)), m_finished(std::move(finished)) {}

    /// Must be called before the first `addTo`.
    void setSampleRate(int rate) {
        m_converter.reset();
        m_rate = rate;
        if (m_source->sampleRate() != rate) m_converter.emplace(m_source->sampleRate(), rate);
        m_fadeStep = static_cast<float>(fadesPerSecond) / static_cast<float>(rate);
    }

    bool plays(const AudioSource& source) const { return m_source.get() == &source; }
    void fadeOut() { m_isFading = true; }

    /// Adds the next frames to `samples`; returns false if the source has ended.
    bool addTo(std::span<float> samples) {
        const int sourceRate = m_source->sampleRate();
        if (m_converter)
            m_converter->changeSourceRate(sourceRate);
        else if (sourceRate != m_rate)
            m_converter.emplace(sourceRate, m_rate);
        std::array<float, 2 * framesAtOnce> block;
        for (std::size_t begin = 0; begin < samples.size(); begin += block.size()) {
            const auto part = samples.subspan(begin, std::min(block.size(), samples.size() - begin));
            const auto rendered = std::span(block).first(part.size());
            const std::size_t frames =
                m_converter ? m_converter->render(*m_source, rendered) : m_source->render(rendered);
            assert(2 * frames <= part.size());
            for (std::size_t i = 0; i < 2 * frames; ++i) {
                if (m_isFading && i % 2 == 0) m_gain = std::max(m_gain - m_fadeStep, 0.0F);
                part[i] += block[i] * m_gain;
            }
            if (2 * frames < part.size() || m_gain == 0) return false;
        }
        return true;
    }

    void tell(const std::string& error) const {
        if (m_finished) m_finished(error);
    }

private:
    std::shared_ptr<AudioSource> m_source;
    AudioOutput::Finished m_finished;
    int m_rate = 0;  ///< of the output
    std::optional<RateConverter> m_converter;
    float m_gain = 1;
    float m_fadeStep = 0;
    bool m_isFading = false;
};

AudioMixer::AudioMixer() = default;
AudioMixer::~AudioMixer() = default;

void AudioMixer::resume(int rate) {
    const std::lock_guard lock(m_mutex);
    m_isSuspended = false;
    m_silentFrames = 0;
    m_rate = rate;
    for (const auto& voice : m_voices)
        voice->setSampleRate(rate);
}

bool AudioMixer::suspendIfSilentFor(std::int64_t frames) {
    const std::lock_guard lock(m_mutex);
    if (!m_voices.empty() || m_silentFrames < frames) return false;
    m_isSuspended = true;
    return true;
}

void AudioMixer::start(std::shared_ptr<AudioSource> source, AudioOutput::Finished finished) {
    const std::lock_guard lock(m_mutex);
    m_voices.push_back(std::make_unique<Voice>(std::move(source), std::move(finished)));
    // Creating a converter takes milliseconds. While suspended, leave it to `resume`.
    if (!m_isSuspended) m_voices.back()->setSampleRate(m_rate);
    m_silentFrames = 0;
}

void AudioMixer::stop(const AudioSource& source) {
    const std::lock_guard lock(m_mutex);
    for (const auto& voice : m_voices) {
        if (voice->plays(source)) voice->fadeOut();
    }
}

void AudioMixer::dropAll(const std::string& error) {
    for (const auto& voice : takeAll())
        voice->tell(error);
}

void AudioMixer::clear() {
    takeAll();
}

std::vector<std::unique_ptr<AudioMixer::Voice>> AudioMixer::takeAll() {
    const std::lock_guard lock(m_mutex);
    return std::exchange(m_voices, {});
}

void AudioMixer::render(std::span<float> samples) noexcept {
    std::fill(samples.begin(), samples.end(), 0.0F);
    std::vector<std::unique_ptr<Voice>> ended;  // notified and destroyed without the lock
    {
        const std::lock_guard lock(m_mutex);
        if (m_isSuspended) return;
        if (m_voices.empty()) m_silentFrames += static_cast<std::int64_t>(samples.size() / 2);
        for (auto& voice : m_voices) {
            if (!voice->addTo(samples)) ended.push_back(std::exchange(voice, nullptr));
        }
        std::erase(m_voices, nullptr);
    }
    for (float& sample : samples)
        sample = sample == sample ? std::clamp(sample, -1.0F, 1.0F) : 0.0F;
    for (const auto& voice : ended)
        voice->tell({});
}

bool AudioMixer::isPlaying() const {
    const std::lock_guard lock(m_mutex);
    return !m_voices.empty();
}

std::int64_t AudioMixer::silentFrames() const {
    const std::lock_guard lock(m_mutex);
    return m_silentFrames;
}

}  // namespace zeb
