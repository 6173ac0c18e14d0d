#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/AudioSource.h"

namespace zeb {

/// Plays a source at another rate: output frame n is the source at frame n x from / to, interpolated by a
/// windowed sinc (Kaiser, 64 source frames wide). Images and aliases lie 80 dB below; what is below nine
/// tenths of the lower rate's half passes. No delay: frame 0 stays frame 0, a source of s frames becomes
/// ceil(s x to / from).
class RateConverter {
public:
    RateConverter(int from, int to);
    ~RateConverter();
    RateConverter(RateConverter&&) noexcept;
    RateConverter& operator=(RateConverter&&) noexcept;

    /// Goes on from another rate, which must be near the first one: the kernel stays.
    void changeSourceRate(int from) { m_from = from; }

    /// As `AudioSource::render`, at the new rate, pulling what it needs from `source`.
    std::size_t render(AudioSource& source, std::span<float> samples) noexcept;

private:
    class Kernel;

    bool fill(AudioSource& source) noexcept;
    void advance();

    std::int64_t m_from;
    std::int64_t m_to;
    std::shared_ptr<const Kernel> m_kernel;
    std::vector<float> m_window;  ///< source frames around the position, silence before the first
    std::size_t m_left = 0;       ///< the frame in the window that the kernel begins at
    std::size_t m_filled = 0;     ///< frames in the window
    std::int64_t m_position = 0;  ///< whole source frames of the position
    std::int64_t m_fraction = 0;  ///< and the rest of it in 1 / to
    std::int64_t m_pulled = 0;    ///< source frames so far
    bool m_ended = false;
};

}  // namespace zeb
