#pragma once

#include <cstdint>
#include <string>

#include "platform/FileHandle.h"

namespace zeb {

/// Turns a file whose writing stopped early into a finished, shorter movie: cuts it after the last whole
/// one-second block and writes frame count, largest block and index. Returns the number of whole seconds;
/// with 0 the file is left as it is. The fields are written and flushed in an order that leaves a playable
/// file at any moment. A finished file stays as it is, but for bytes after its last block.
///
/// The index keeps its length: entries without a second become 0, and seconds beyond the index stay in the
/// movie without an entry (readers reach them by walking).
///
/// Throws `FileError`, or `ZEBFormatError` (domain "ZEB") when the file is not a ZEB file.
std::int64_t finishPartialFile(const std::string& path);

/// The same on one file opened twice. Closes neither.
std::int64_t finishPartialFile(ReadableFile& source, WritableFile& target);

}  // namespace zeb
