#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/sound/AudioOutput.h"

namespace zeb {

/// Converts a source to another sample rate. Output frame n is the source at frame n x from / to,
/// interpolated by a windowed sinc (Kaiser, 64 source frames wide). The stop band is at -80 dB, the pass band
/// ends at 0.9 of the lower Nyquist frequency. There is no delay: frame 0 stays frame 0, and s source frames
/// give ceil(s x to / from) frames.
class RateConverter {
public:
    RateConverter(int from, int to);
    ~RateConverter();
    RateConverter(RateConverter&&) noexcept;
    RateConverter& operator=(RateConverter&&) noexcept;

    /// Changes the source rate. The new rate must be near the first one, because the kernel is kept.
    void changeSourceRate(int from) { m_from = from; }

    /// Renders at the new rate as `AudioSource::render` does; reads the necessary frames from `source`.
    std::size_t render(AudioSource& source, std::span<float> samples) noexcept;

private:
    class Kernel;

    bool fill(AudioSource& source) noexcept;
    void advance();

    std::int64_t m_from;
    std::int64_t m_to;
    std::shared_ptr<const Kernel> m_kernel;
    std::vector<float> m_window;  ///< source frames around the position, silence before the first
    std::size_t m_left = 0;       ///< first frame of the kernel in the window
    std::size_t m_filled = 0;     ///< frames in the window
    std::int64_t m_position = 0;  ///< whole source frames of the position
    std::int64_t m_fraction = 0;  ///< fraction of the position, in units of 1 / to
    std::int64_t m_pulled = 0;    ///< source frames read so far
    bool m_ended = false;
};

}  // namespace zeb
