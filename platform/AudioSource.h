#pragma once

#include <cstddef>
#include <span>

namespace zeb {

/// Something that can be heard. After it has been handed to an output, `render` is called on the output's own
/// thread.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    /// Frames per second, at least 1. May change by a little while the source plays; asked before each
    /// buffer.
    virtual int sampleRate() const noexcept = 0;

    /// Writes the next frames: interleaved left and right, nominally -1 ... 1, two floats each; `samples` has
    /// room for whole frames. Returns how many frames that are; fewer than there is room for means that the
    /// source has ended and will not be asked again. Must be quick: neither wait nor read files.
    virtual std::size_t render(std::span<float> samples) noexcept = 0;
};

}  // namespace zeb
