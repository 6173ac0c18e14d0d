#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "media/drawing/MatrixConversion.h"

struct AVFrame;

namespace zeb::ffmpeg {

/// One scaling task: from which kind of frame to which size.
struct ScalingTask {
    int format = 0;  ///< pixel format of the frames, code of the libraries
    int width = 0;   ///< of the frames
    int height = 0;
    bool fullRange = false;
    int chromaLocation = 0;  ///< of 4:2:0 samples, code point of ITU-T H.273
    int targetWidth = 0;
    int targetHeight = 0;

    bool operator==(const ScalingTask&) const = default;
};

/// A stretch of a scaled row: 16-bit values of the components 0 to 2 (red, green, blue; Y', Cb, Cr; only 0 of
/// grey) and of 3, the alpha channel, by which they are not multiplied.
struct ScaledStretch {
    int y = 0;
    int begin = 0;                                     ///< first column
    int end = 0;                                       ///< behind the last column
    std::array<const std::uint16_t*, 4> components{};  ///< from `begin` on; null for those that are not there
};

/// Scales the components of frames to one size in one step, by Lanczos filtering with three lobes; chroma
/// comes to the size of luma. Components stay what they are (Y'CbCr, RGB or grey, range included). Used by
/// one thread at a time.
class FrameScaler {
public:
    /// Must not throw.
    using TakeStretch = std::function<void(const ScaledStretch&)>;

    explicit FrameScaler(const ScalingTask& task);
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    const ScalingTask& task() const noexcept;

    /// Takes in a frame of the task's kind, which must outlive the scaling. Throws `PlatformError`.
    void load(const AVFrame& frame);

    // Of the loaded frame:

    ComponentFamily family() const noexcept;
    bool hasAlpha() const noexcept;
    /// Hands the scaled picture over piece by piece, while it is still in the processor's cache: all of it,
    /// the same place perhaps more than once. Throws `PlatformError`.
    void scale(const TakeStretch& take);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
