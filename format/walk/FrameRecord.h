#pragma once

#include <cstdint>
#include <vector>

#include "format/walk/FileCursor.h"

namespace zeb {

/// Reads the frame record of `size` bytes at the cursor in place of `record`'s contents and moves past it.
/// `width` and `height` are the movie's. Memory is taken only for what can be a picture: a larger record
/// (`FrameDecoder::canDecode`) is passed over and leaves `record` empty. False when the file has fewer bytes.
/// Throws `FileError`.
bool readFrameRecord(FileCursor& file, std::uint64_t size, int width, int height,
                     std::vector<std::uint8_t>& record);

}  // namespace zeb
