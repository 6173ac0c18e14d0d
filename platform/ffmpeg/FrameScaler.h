#pragma once

#include <cstdint>
#include <memory>

#include "platform/ffmpeg/MatrixConversion.h"

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

/// Scales the components of frames to one size in one step, by Lanczos filtering with three lobes; chroma
/// comes to the size of luma. Components stay what they are (Y'CbCr, RGB or grey, range included). Used by
/// one thread at a time.
class FrameScaler {
public:
    /// Throws `PlatformError`.
    explicit FrameScaler(const ScalingTask& task);
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    const ScalingTask& task() const noexcept;

    /// Scales a frame of the task's kind. Throws `PlatformError`.
    void scale(const AVFrame& frame);

    // Of the last result:

    ComponentFamily family() const noexcept;
    bool hasAlpha() const noexcept;
    /// Row `y` of component 0, 1 or 2 (red, green, blue; Y', Cb, Cr; only 0 of grey) or 3, the alpha channel:
    /// `targetWidth` values of 16 bits, not multiplied by alpha.
    const std::uint16_t* row(int component, int y) const;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
