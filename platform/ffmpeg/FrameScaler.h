#pragma once

#include <cstdint>
#include <memory>

#include "platform/ffmpeg/ColourDescription.h"

struct AVFrame;

namespace zeb::ffmpeg {

/// One scaling task: from which kind of frame to which size.
struct ScalingTask {
    int format = 0;  ///< pixel format of the frames, code of the libraries
    int width = 0;   ///< of the frames
    int height = 0;
    ColourDescription colour;
    int targetWidth = 0;
    int targetHeight = 0;
    int targetBits = 8;  ///< per component: 8, or `ColourConversion::bits`

    bool operator==(const ScalingTask&) const = default;
};

/// Scales frames to RGB components in one step, by Lanczos filtering with three lobes. Used by one thread at
/// a time.
class FrameScaler {
public:
    /// Throws `PlatformError`.
    explicit FrameScaler(const ScalingTask& task);
    ~FrameScaler();
    FrameScaler(const FrameScaler&) = delete;
    FrameScaler& operator=(const FrameScaler&) = delete;

    const ScalingTask& task() const noexcept;

    /// Scales a frame of the task's kind.
    void scale(const AVFrame& frame);

    /// Row `y` of component 0 red, 1 green, 2 blue or 3 alpha of the last result, `targetWidth` values of one
    /// byte (8 bits) or two; not premultiplied.
    const void* row(int component, int y) const;

    /// Whether the frames have an alpha channel.
    bool hasAlpha() const noexcept;

private:
    struct State;
    std::unique_ptr<State> m_state;
};

}  // namespace zeb::ffmpeg
