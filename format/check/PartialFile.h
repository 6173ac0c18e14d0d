#pragma once

#include <cstdint>
#include <string>

#include "format/ZEBHeader.h"
#include "format/check/MovieFacts.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// A movie whose writing stopped early, or that was damaged later. Makes a finished movie of it, in place or
/// as a copy. All functions throw `FileError`.
///
/// The index keeps its length: entries without a second become 0, and seconds beyond the index stay in the
/// movie without an entry (readers reach them by walking).
class PartialFile {
public:
    /// Reads the file's facts. `source` must outlive this object. Throws `ZEBFormatError` (domain "ZEB") if
    /// it is not a ZEB file.
    explicit PartialFile(ReadableFile& source);

    const MovieFacts& facts() const noexcept { return m_facts; }

    /// Returns true if the file needs no repair: frame count, largest block and index match the blocks, and
    /// no bytes follow the last block.
    bool isComplete();

    /// Makes the file itself a finished movie: cuts it after the last whole second and writes frame count,
    /// largest block and index. `target` is the same file. Does nothing to a complete file or to a file
    /// without a whole second. The order of writes and flushes leaves a playable file at any moment. Throws
    /// `MovieDamageError`, before anything is written, if whole seconds follow a damaged one.
    void finish(WritableFile& target);

    /// Writes a finished movie of all whole seconds to an empty file and flushes it. Damaged seconds are left
    /// out with their sound, so that sound and pictures stay synchronous.
    void copyWholeSeconds(WritableFile& target);

private:
    template <typename Visit>
    void composeIndex(const Visit& visit);

    ReadableFile& m_source;
    LocatedHeader m_located;
    MovieFacts m_facts;
};

/// Finishes the file with `PartialFile::finish` and returns the number of whole seconds. If it returns 0, the
/// file is unchanged. Throws the errors of `PartialFile`.
std::int64_t finishPartialFile(const std::string& path);

/// The same for a file that is already open, for reading as `source` and for writing as `target`. Closes
/// neither.
std::int64_t finishPartialFile(ReadableFile& source, WritableFile& target);

}  // namespace zeb
