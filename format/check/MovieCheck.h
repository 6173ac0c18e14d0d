#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "format/ZEBHeader.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// An error in a movie and its position.
struct MovieFault {
    std::uint64_t offset = 0;  ///< bytes from the start of the file
    std::string text;          ///< without a full stop
};

/// The result of checking a movie.
struct MovieCheck {
    ZEBHeader header;                 ///< without the index; filled as far as it could be read
    std::int64_t seconds = 0;         ///< valid one-second blocks
    std::optional<MovieFault> fault;  ///< the first fault; nothing for a valid movie
    bool isCancelled = false;         ///< stopped early: the rest is unchecked
};

/// Checks every rule of the layout (format/Layout.h) and decodes every frame, from the start of the file to
/// its end or to the first fault. Uses the memory of one frame. `open` is called more than once and must
/// return the same file each time; `isCancelled` may be empty.
/// Throws `ZEBFormatError` if the file is not a movie, and `FileError`.
MovieCheck checkMovie(const std::function<std::unique_ptr<ReadableFile>()>& open,
                      const std::function<bool()>& isCancelled);

}  // namespace zeb
