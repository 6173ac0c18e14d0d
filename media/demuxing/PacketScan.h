#pragma once

#include "media/demuxing/StreamFacts.h"

namespace zeb::ffmpeg {

/// Fills in facts that the header of a file lacks or misstates: the ends of the tracks, the places where
/// times restart, and the frame rate of a video without a plausible one.
///
/// If an index covers all pictures and sounds and the file contains them, the container's values are used.
/// Otherwise packets are read: those near the end, or all of them if times may restart or the container
/// states no duration. `reopen` opens the file of `opened` again, with the joints that `facts` has at that
/// moment. Throws the errors of reading.
void measure(ContainerFacts& facts, const Demuxer& opened, const OpenDemuxer& reopen);

}  // namespace zeb::ffmpeg
