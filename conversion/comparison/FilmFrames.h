#pragma once

#include <cstdint>
#include <memory>

#include "codec/PixelBytes.h"
#include "conversion/plan/ConversionPlan.h"
#include "media/Media.h"

namespace zeb {

/// The film's picture of each frame of a movie: the only place of a comparison that decides which picture of
/// the film a frame shows, and how it is drawn. Used by one thread at a time.
class FilmFrames {
public:
    /// `plan`: of the movie; its schedule gives the times. `settings`: the shape of the frames. `threads`:
    /// decoder threads. Throws the errors of `MediaAsset::makeImageGenerator`.
    FilmFrames(const MediaAsset& film, const ConversionPlan& plan, const Settings& settings, int threads,
               IsCancelled isCancelled);

    /// Returns the picture of frame `index`; call it with ascending numbers. Returns null if the picture is
    /// damaged. Throws `MediaError::interrupted` on cancellation, `MediaError::cannotRead`.
    std::shared_ptr<const Picture> at(std::int64_t index);

    /// Returns the pixels of a picture in the shape of the movie's frames of this size, in sRGB: 4 bytes
    /// each, R, G, B, A. Callable from any thread. Throws the errors of `Picture::draw`.
    PixelBytes drawn(const Picture& picture, FrameSize size) const;

private:
    SourceInfo m_source;
    Settings m_settings;
    GrabSchedule m_schedule;
    std::unique_ptr<ImageGenerator> m_generator;
};

}  // namespace zeb
