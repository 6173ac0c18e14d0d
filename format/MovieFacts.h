#pragma once

#include <cstdint>

#include "format/Layout.h"
#include "format/ZEBHeader.h"
#include "platform/FileHandle.h"

namespace zeb {

/// What can be told of a ZEB file without decoding it.
struct MovieFacts {
    ZEBHeader header;                ///< without the index
    std::uint64_t fileSize = 0;      ///< bytes
    std::uint64_t indexEntries = 0;  ///< seconds that the index has room for
    /// The largest block is recorded and all seconds that the header counts are there. Anything else is the
    /// work of `finishPartialFile`.
    bool isFinished = false;
    std::int64_t wholeSeconds = 0;   ///< whole one-second blocks: the playing time in seconds
    std::int64_t wholeFrames = 0;    ///< wholeSeconds x fps
    std::uint64_t largestBlock = 0;  ///< bytes with the length field; found by walking when not recorded
    double bytesPerSecond = 0;       ///< of the one-second blocks, on average; 0 without any

    bool isLooping() const { return (header.options & layout::loopOption) != 0; }
};

/// Whether a file begins as every ZEB file does. Throws `FileError`.
bool isMovie(ReadableFile& file);

/// Reads a finished file's facts from its header and last block, another file's by walking its blocks. Safe
/// for any bytes, in memory below 100 KB. Throws `ZEBFormatError` for a file that is no ZEB file,
/// `FileError`.
MovieFacts readMovieFacts(ReadableFile& file);

}  // namespace zeb
