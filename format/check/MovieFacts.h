#pragma once

#include <cstdint>
#include <optional>

#include "format/Layout.h"
#include "format/ZEBHeader.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// Properties of a ZEB file that are known without decoding its frames.
struct MovieFacts {
    /// Incomplete seconds that whole seconds follow.
    struct Damage {
        std::int64_t firstSecond = 0;    ///< number of the first incomplete second, from 0
        std::uint64_t offset = 0;        ///< bytes from the start of the file to its block
        std::int64_t seconds = 0;        ///< number of incomplete seconds
        std::int64_t secondsBehind = 0;  ///< whole seconds after the first incomplete one
    };

    ZEBHeader header;                ///< without the index
    std::uint64_t fileSize = 0;      ///< bytes
    std::uint64_t indexEntries = 0;  ///< seconds for which the index has an entry
    /// True if the header marks the movie as finished. It may have been damaged since.
    bool wasFinished = false;
    /// True if `wasFinished` and every second that the header counts is whole. Bytes after the last second
    /// are not checked.
    bool isFinished = false;
    std::optional<Damage> damage;
    std::int64_t wholeSeconds = 0;   ///< number of whole one-second blocks found (format/walk/BlockWalker.h)
    std::int64_t wholeFrames = 0;    ///< wholeSeconds x fps
    std::uint64_t largestBlock = 0;  ///< of the whole blocks, in bytes including the length field
    std::uint64_t end = 0;           ///< bytes from the start of the file to the end of the last whole block
    double bytesPerSecond = 0;       ///< average of the whole blocks; 0 without any

    bool isLooping() const { return (header.options & layout::loopOption) != 0; }
};

/// Returns true if a file starts with the signature of ZEB files. Throws `FileError`.
bool isMovie(ReadableFile& file);

/// Reads a file's facts by walking its blocks: one word per frame. Accepts arbitrary bytes; uses less than
/// 100 KB of memory. Throws `ZEBFormatError` if the file is not a ZEB file, and `FileError`.
MovieFacts readMovieFacts(ReadableFile& file);

}  // namespace zeb
