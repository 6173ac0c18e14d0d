#pragma once

#include <memory>

#include "platform/FilmWriter.h"

namespace zeb {

/// The encoders of the FFmpeg libraries. Their messages go where `makeFFmpegMediaLibrary` sends them.
std::unique_ptr<FilmLibrary> makeFFmpegFilmLibrary();

}  // namespace zeb
