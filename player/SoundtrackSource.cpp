#include "player/SoundtrackSource.h"

#include <algorithm>
#include <utility>

namespace zeb {

SoundtrackSource::SoundtrackSource(std::shared_ptr<const Soundtrack> soundtrack, std::int64_t first,
                                   bool loops, int sampleRate)
    : m_soundtrack(std::move(soundtrack)),
      m_first(first),
      m_end(frameCount(*m_soundtrack)),
      m_loops(loops),
      m_sampleRate(sampleRate),
      m_next(first),
      m_fadeLength(first > 0 ? sampleRate * 3 / 1000 : 0) {}

std::int64_t SoundtrackSource::frameCount(const Soundtrack& soundtrack) {
    if (soundtrack.audioChannels < 1) return 0;
    return static_cast<std::int64_t>(soundtrack.bytes.size()) / soundtrack.audioChannels;
}

std::size_t SoundtrackSource::render(std::span<float> samples) noexcept {
    const auto channels = static_cast<std::size_t>(m_soundtrack->audioChannels);
    const std::size_t rightChannel = channels > 1 ? 1 : 0;
    const std::size_t room = samples.size() / 2;
    std::size_t done = 0;
    for (; done < room; ++done) {
        if (m_next == m_end) {
            if (!m_loops) break;
            m_next = m_first;
        }
        const std::uint8_t* frame =
            m_soundtrack->bytes.data() + static_cast<std::size_t>(m_next++) * channels;
        float scale = 0.0078125F;
        if (m_faded < m_fadeLength) scale *= static_cast<float>(m_faded++) / static_cast<float>(m_fadeLength);
        samples[2 * done] = static_cast<float>(frame[0] - 128) * scale;
        samples[2 * done + 1] = static_cast<float>(frame[rightChannel] - 128) * scale;
    }
    return done;
}

}  // namespace zeb
