#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>

#include "media/drawing/MatrixConversion.h"

struct AVFrame;

namespace zeb::ffmpeg {

/// Parameters of a scaler: format and size of the source, size of the target.
struct ScalingTask {
    int format = 0;  ///< AVPixelFormat of the frames
    int width = 0;   ///< of the frames
    int height = 0;
    bool fullRange = false;
    int chromaLocation = 0;  ///< of 4:2:0 samples, code point of ITU-T H.273
    // Edges of the scaled part in pixels of the frame; fractions are allowed.
    double left = 0;
    double top = 0;
    double right = 0;
    double bottom = 0;
    int targetWidth = 0;
    int targetHeight = 0;

    bool operator==(const ScalingTask&) const = default;
};

/// A part of a scaled row: 16-bit values of the components 0 to 2 (red, green, blue; Y', Cb, Cr; only 0 for
/// grey) and of component 3, alpha. The values are not multiplied by alpha.
struct ScaledStretch {
    int y = 0;
    int begin = 0;                                     ///< first column
    int end = 0;                                       ///< past the last column
    std::array<const std::uint16_t*, 4> components{};  ///< start at column `begin`; null if missing
};

/// Scales the components of frames to one size in one step, by Lanczos filtering with three lobes; chroma is
/// scaled to the size of luma. Does not convert between Y'CbCr, RGB and grey or between ranges. Used by one
/// thread at a time.
class FrameScaler {
public:
    /// Must not throw.
    using TakeStretch = std::function<void(const ScaledStretch&)>;

    explicit FrameScaler(const ScalingTask& task);
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    const ScalingTask& task() const noexcept;

    /// Sets the frame to scale, which matches the task and must outlive the scaling. Throws `PlatformError`.
    void load(const AVFrame& frame);

    // For the loaded frame:

    ComponentFamily family() const noexcept;
    bool hasAlpha() const noexcept;
    /// Passes the scaled picture to `take` piece by piece, while it is in the processor's cache. The pieces
    /// cover the whole picture and may overlap. Throws `PlatformError`.
    void scale(const TakeStretch& take);

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
