#pragma once

#include <cstdint>
#include <memory>

#include "codec/FrameDecoder.h"
#include "conversion/look/FrameMaker.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/plan/Settings.h"
#include "media/Media.h"

namespace zeb {

/// A frame of a movie that has not been made, and the film's picture in the same shape.
struct PreviewFrame {
    FrameImage result;    ///< the decoded record
    FrameImage original;  ///< in sRGB, without adjustments
    double time = 0;      ///< of the frame in the film, in seconds
};

/// Shows frames as a conversion would make them. Used by one thread at a time.
class Preview {
public:
    /// The asset has pictures and outlives the preview. `settings` without automatic ones
    /// (`settleAutomatic`). `threads`: decoder threads. Throws like `planConversion`.
    Preview(const MediaAsset& asset, const Settings& settings, int threads, const IsCancelled& isCancelled);

    const ConversionPlan& plan() const { return m_plan; }

    /// Returns the number of the movie's frame on screen at a time of the film. Throws `SettingsError` if the
    /// film or its converted part has ended then or has not begun.
    std::int64_t frameAt(const TimePoint& time) const;
    /// Returns the number of frame `index` of `count` frames that are spread over the movie.
    std::int64_t frameOf(int index, int count) const;

    /// Returns frame 0 ... `totalFrames` - 1. Throws like `copyImage` and `FrameMaker`.
    PreviewFrame frame(std::int64_t index);

private:
    ConversionPlan m_plan;
    double m_filmDuration;
    GrabSchedule m_schedule;
    FrameMaker m_maker;
    FrameDecoder m_decoder;
    std::unique_ptr<ImageGenerator> m_generator;
};

/// Returns two pictures side by side, with a gap.
FrameImage sideBySide(const FrameImage& left, const FrameImage& right);

/// Returns pictures of equal size in rows of `columns`, with gaps. There is at least one picture.
FrameImage contactSheet(std::span<const FrameImage> pictures, int columns);

}  // namespace zeb
