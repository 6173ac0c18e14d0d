#pragma once

#include "media/reading/StreamFacts.h"

namespace zeb::ffmpeg {

/// Fills in what the head of a file does not tell, or not truly: where the tracks end, where times begin
/// again, and the frame rate of a video whose container names none or an absurd one.
///
/// Where an index leads to all pictures and sounds, and the file reaches as far, the container's figures
/// count; else packets are read: those near the end, or all of them where times may begin again or nothing is
/// stated. `reopen` opens the file that `opened` is, with the joints that `facts` has by then. Throws what
/// reading throws.
void measure(ContainerFacts& facts, const Demuxer& opened, const OpenDemuxer& reopen);

}  // namespace zeb::ffmpeg
