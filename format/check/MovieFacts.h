#pragma once

#include <cstdint>
#include <optional>

#include "format/Layout.h"
#include "format/ZEBHeader.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// What can be told of a ZEB file without decoding it.
struct MovieFacts {
    /// Seconds that are not whole although whole ones follow them.
    struct Damage {
        std::int64_t firstSecond = 0;    ///< number of the first one, from 0
        std::uint64_t offset = 0;        ///< bytes from the start of the file to its block
        std::int64_t seconds = 0;        ///< how many there are
        std::int64_t secondsBehind = 0;  ///< whole ones behind the first of them
    };

    ZEBHeader header;                ///< without the index
    std::uint64_t fileSize = 0;      ///< bytes
    std::uint64_t indexEntries = 0;  ///< seconds that the index has room for
    /// The header says that the movie was finished. It may have been damaged since.
    bool wasFinished = false;
    /// It was, and every second that the header counts is whole. What follows the last one is not looked at.
    bool isFinished = false;
    std::optional<Damage> damage;
    std::int64_t wholeSeconds =
        0;  ///< whole one-second blocks (format/walk/BlockWalker.h), as far as they are found
    std::int64_t wholeFrames = 0;    ///< wholeSeconds x fps
    std::uint64_t largestBlock = 0;  ///< of the whole ones, bytes with the length field
    std::uint64_t end = 0;           ///< bytes from the start of the file to the end of the last whole block
    double bytesPerSecond = 0;       ///< of the whole blocks, on average; 0 without any

    bool isLooping() const { return (header.options & layout::loopOption) != 0; }
};

/// Whether a file begins as every ZEB file does. Throws `FileError`.
bool isMovie(ReadableFile& file);

/// Reads a file's facts by walking its blocks: one word per frame. Safe for any bytes, in memory below 100
/// KB. Throws `ZEBFormatError` for a file that is no ZEB file, `FileError`.
MovieFacts readMovieFacts(ReadableFile& file);

}  // namespace zeb
