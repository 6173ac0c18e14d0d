#pragma once

#include "media/ffmpeg/Libraries.h"

namespace zeb::ffmpeg {

/// Returns true if every picture of the coding is decoded without any other.
bool isIntraOnly(AVCodecID id);

/// Returns true if the packet starts a group of pictures: neither its picture nor any later one refers to a
/// picture before it. `decoder` is that of the packet's stream. The container's key flag is not sufficient:
/// H.264 and HEVC streams also set it for pictures that later pictures refer past.
bool startsGroup(const AVPacket& packet, const AVCodecContext& decoder);

/// Returns true if the packet produces a displayed picture.
bool isShown(const AVPacket& packet, AVCodecID id);

}  // namespace zeb::ffmpeg
