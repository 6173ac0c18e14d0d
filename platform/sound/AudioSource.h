#pragma once

#include <cstddef>
#include <span>

namespace zeb {

/// A source of sound. After a source was given to an output, `render` is called on the thread of the output.
class AudioSource {
public:
    virtual ~AudioSource() = default;

    /// Frames per second, at least 1. Called before each buffer; the rate may change slightly while the
    /// source plays.
    virtual int sampleRate() const noexcept = 0;

    /// Writes the next frames: interleaved left and right, nominally -1 ... 1, two floats per frame.
    /// `samples` has room for whole frames. Returns the number of frames written; fewer than fit means that
    /// the source has ended, and `render` is not called again. Must neither wait nor read files.
    virtual std::size_t render(std::span<float> samples) noexcept = 0;
};

}  // namespace zeb
