#pragma once

#include <cstdint>
#include <vector>

#include "format/walk/FileCursor.h"

namespace zeb {

/// Replaces `record` by the frame record of `size` bytes at the cursor and moves past it. `width` and
/// `height` are the movie's. A record too large for a picture (`FrameDecoder::canDecode`) is skipped without
/// allocating memory, and `record` is then empty. Returns false if the file has fewer bytes. Throws
/// `FileError`.
bool readFrameRecord(FileCursor& file, std::uint64_t size, int width, int height,
                     std::vector<std::uint8_t>& record);

}  // namespace zeb
