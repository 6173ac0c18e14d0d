#pragma once

#include <memory>

#include "media/FilmWriter.h"
#include "media/reading/FFmpegMediaLibrary.h"

namespace zeb {

/// The encoders of the FFmpeg libraries. `logging` holds for the whole process.
std::unique_ptr<FilmLibrary> makeFFmpegFilmLibrary(MediaLogging logging);

}  // namespace zeb
