#pragma once

#include <cstdint>
#include <string>

#include "format/ZEBHeader.h"
#include "format/check/MovieFacts.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// A movie whose writing stopped early, or that was damaged later, and what can be made of it. All functions
/// throw `FileError`.
///
/// The index of what is made keeps the length that it has: entries without a second become 0, and seconds
/// beyond the index stay in the movie without an entry (readers reach them by walking).
class PartialFile {
public:
    /// Looks at the file, which must outlive this. Throws `ZEBFormatError` (domain "ZEB") when it is no ZEB
    /// file.
    explicit PartialFile(ReadableFile& source);

    const MovieFacts& facts() const noexcept { return m_facts; }

    /// Whether it is right already: frame count, largest block and index say what is there, and nothing
    /// stands behind the last block.
    bool isComplete();

    /// Makes the file itself a finished movie: cuts it after the last whole second and writes frame count,
    /// largest block and index. `target` is the same file. Does nothing to a file that is complete, or
    /// without a whole second. The fields are written and flushed in an order that leaves a playable file at
    /// any moment. Throws `MovieDamageError`, before anything is written, when whole seconds stand behind a
    /// damaged one.
    void finish(WritableFile& target);

    /// Writes a finished movie of all whole seconds into an empty file and flushes it. Damaged seconds are
    /// left out: each second has its own sound, so that sound and pictures stay in step.
    void copyWholeSeconds(WritableFile& target);

private:
    template <typename Visit>
    void composeIndex(const Visit& visit);

    ReadableFile& m_source;
    LocatedHeader m_located;
    MovieFacts m_facts;
};

/// Finishes the file as `PartialFile::finish` does and returns the number of whole seconds; with 0 the file
/// is left as it is. Throws what it throws.
std::int64_t finishPartialFile(const std::string& path);

/// The same on one file opened twice. Closes neither.
std::int64_t finishPartialFile(ReadableFile& source, WritableFile& target);

}  // namespace zeb
