#pragma once

#include <memory>
#include <mutex>
#include <vector>

#include "media/demuxing/StreamFacts.h"
#include "media/drawing/ColourConversion.h"
#include "media/drawing/FrameScaler.h"
#include "media/ffmpeg/Handles.h"
#include "platform/base/Picture.h"

namespace zeb::ffmpeg {

/// Scalers and colour tables, which are costly to make. A drawing borrows them, and they are reused for the
/// next picture of the same kind. May be used by several threads.
class DrawingTools {
public:
    std::unique_ptr<FrameScaler> borrowScaler(const ScalingTask& task);
    void giveBack(std::unique_ptr<FrameScaler> scaler);
    std::shared_ptr<const ColourConversion> conversion(const ColourDescription& colour);

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<FrameScaler>> m_scalers;
    ColourDescription m_colour;
    std::shared_ptr<const ColourConversion> m_conversion;
};

/// A decoded frame as a picture.
class FramePicture final : public Picture {
public:
    FramePicture(Frame frame, const VideoStreamFacts& facts, std::shared_ptr<DrawingTools> tools);

    int width() const override { return m_width; }
    int height() const override { return m_height; }
    void draw(const BitmapContext& bitmap) const override;

private:
    Frame m_frame;
    Orientation m_orientation;
    std::shared_ptr<DrawingTools> m_tools;
    int m_width;
    int m_height;
};

}  // namespace zeb::ffmpeg
