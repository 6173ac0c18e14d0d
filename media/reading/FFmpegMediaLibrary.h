#pragma once

#include <memory>

#include "media/Media.h"

namespace zeb {

/// Destination of the FFmpeg libraries' log messages.
enum class MediaLogging {
    silent,   ///< dropped
    verbose,  ///< standard error
};

/// Makes the media library based on the FFmpeg libraries. `logging` applies to the whole process.
std::unique_ptr<MediaLibrary> makeFFmpegMediaLibrary(MediaLogging logging);

}  // namespace zeb
