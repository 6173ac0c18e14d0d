#pragma once

#include <string>

#include "platform/ffmpeg/StreamFacts.h"

namespace zeb::ffmpeg {

/// Length of the presentation in seconds: the container's figure where it is plausible for the size of the
/// file, else found by reading the packets. Fills in the frame rate of a video whose container names none or
/// an absurd one. Throws `MediaError::interrupted`.
double presentationDuration(const std::string& path, const Demuxer& opened, ContainerFacts& facts,
                            const IsCancelled& isCancelled);

}  // namespace zeb::ffmpeg
