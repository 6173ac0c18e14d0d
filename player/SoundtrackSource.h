#pragma once

#include <cstdint>
#include <memory>

#include "format/ZEBReader.h"
#include "platform/AudioSource.h"

namespace zeb {

/// Part of a movie's sound as an output plays it: from a sample on to the end, once or again and again. A
/// byte b becomes (b - 128) / 128; a mono track is heard on both sides, of more than two channels the first
/// two.
///
/// Begins with a fade of 3 ms when it begins in the middle, where a wave would else jump from silence.
class SoundtrackSource final : public AudioSource {
public:
    /// `first`: a frame of the soundtrack, below `frameCount`. `sampleRate` is the pace at which it is
    /// played.
    SoundtrackSource(std::shared_ptr<const Soundtrack> soundtrack, std::int64_t first, bool loops,
                     int sampleRate);

    static std::int64_t frameCount(const Soundtrack& soundtrack);

    int sampleRate() const noexcept override { return m_sampleRate; }
    std::size_t render(std::span<float> samples) noexcept override;

private:
    std::shared_ptr<const Soundtrack> m_soundtrack;
    std::int64_t m_first;
    std::int64_t m_end;
    bool m_loops;
    int m_sampleRate;
    std::int64_t m_next;
    std::int64_t m_fadeLength;
    std::int64_t m_faded = 0;  ///< frames of the fade that have been played
};

}  // namespace zeb
