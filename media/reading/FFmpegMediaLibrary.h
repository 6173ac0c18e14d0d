#pragma once

#include <memory>

#include "media/Media.h"

namespace zeb {

/// Where the FFmpeg libraries' own messages go.
enum class MediaLogging {
    silent,   ///< nowhere
    verbose,  ///< standard error
};

/// The media library on the FFmpeg libraries. `logging` holds for the whole process.
std::unique_ptr<MediaLibrary> makeFFmpegMediaLibrary(MediaLogging logging);

}  // namespace zeb
