#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "format/ZEBHeader.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// What is wrong with a movie, and where.
struct MovieFault {
    std::uint64_t offset = 0;  ///< bytes from the start of the file
    std::string text;          ///< without a full stop
};

/// What came of checking a movie.
struct MovieCheck {
    ZEBHeader header;                 ///< without the index; as far as it could be read
    std::int64_t seconds = 0;         ///< one-second blocks that were found right
    std::optional<MovieFault> fault;  ///< the first thing that is wrong; nothing when all is right
    bool isCancelled = false;         ///< stopped early: nothing is known about the rest
};

/// Checks every rule of the layout (format/Layout.h) and decodes every frame, from the start of the file to
/// its end or to the first fault. Needs the memory of one frame. `open` is called more than once and must
/// give the same file each time; `isCancelled` may be empty.
/// Throws `ZEBFormatError` when the file is no movie at all, `FileError`.
MovieCheck checkMovie(const std::function<std::unique_ptr<ReadableFile>()>& open,
                      const std::function<bool()>& isCancelled);

}  // namespace zeb
