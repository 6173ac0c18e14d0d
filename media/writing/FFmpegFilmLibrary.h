#pragma once

#include <memory>

#include "media/FilmWriter.h"
#include "media/reading/FFmpegMediaLibrary.h"

namespace zeb {

/// Makes the encoders based on the FFmpeg libraries. `logging` applies to the whole process.
std::unique_ptr<FilmLibrary> makeFFmpegFilmLibrary(MediaLogging logging);

}  // namespace zeb
