#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/files/FileHandle.h"

namespace zeb {

/// What a movie's header says, as given to a writer. Signed and wide, so that the writer can refuse what does
/// not fit its field.
struct MovieParameters {
    std::string title;       ///< UTF-8; stored as ISO Latin-1 where it can be, else as UTF-8
    std::int64_t width = 0;  ///< pixels
    std::int64_t height = 0;
    std::int64_t fps = 0;              ///< frames per second and per block, at least 1
    std::int64_t qlMode = 0;           ///< 4 or 32
    std::int64_t totalFrames = 0;      ///< seconds x fps
    std::int64_t frameIndexCount = 0;  ///< seconds that will be written; not negative
    int audioChannels = 0;             ///< 0 (no sound), 1 or 2
    bool loop = false;                 ///< the movie is meant to be played again and again
};

/// Creates the file for a movie, in place of one that stands there. When that is not possible:
/// `ZEBConverterError::cannotCreateOutput(path)`.
std::unique_ptr<WritableFile> createMovieFile(const std::string& path);

/// Writes a ZEB file: the header with placeholders at creation, one one-second block per `writeSecond`, and
/// at the end the size of the largest block and the frame index over their placeholders. Used by one thread
/// at a time: create, `writeSecond` ..., `finish`, `close`. Without `finish` a valid header with a zero index
/// remains, and readers walk the blocks.
///
/// Throws `ZEBWriterError` for values beyond the format's fields and `FileError` for the file. The layout of
/// the file is in `format/Layout.h`.
class ZEBWriter {
public:
    /// Makes the file by `createMovieFile` and writes the header.
    ZEBWriter(const std::string& path, const MovieParameters& movie);
    /// The same on a file that is already open and empty.
    ZEBWriter(std::unique_ptr<WritableFile> handle, const MovieParameters& movie);

    /// Appends one second: its sound and its encoded frames in display order, exactly fps of them, records as
    /// `SpriteEncoder` makes them. The sound is audioChannels x 20000 bytes, unsigned samples of 8 bits, 128
    /// = silence, channels interleaved; empty without channels. The writer stores what it is given and counts
    /// neither frames nor samples. The block is handed to the file as one write.
    ///
    /// Neither sound, frame nor block may reach 4 GiB, nor may a block begin there: `ZEBWriterError`, before
    /// anything is written unless the length field alone takes the block that far. When writing fails, what
    /// was written of the block is cut off again: whole seconds stay. The failed second keeps its place in
    /// the index, so after a failure call `close` and `finishPartialFile` instead of `finish`.
    void writeSecond(std::span<const std::uint8_t> sound,
                     std::span<const std::span<const std::uint8_t>> frames);

    /// Writes the largest block size and the index, and flushes the file. Once, after the last second.
    void finish();

    /// Flushes to disk and closes. Ends the writer's use.
    void close();

    /// The file's length: header and whole blocks.
    std::uint64_t bytesWritten() const noexcept { return m_bytesWritten; }

private:
    void cutOff(std::uint64_t position) noexcept;

    std::unique_ptr<WritableFile> m_handle;
    std::uint64_t m_frameIndexOffsetsPos = 0;
    std::int64_t m_frameIndexCount = 0;
    std::uint32_t m_maxSecondBlockSize = 0;
    std::uint64_t m_headerMaxBlockFieldPos = 0;
    std::vector<std::uint32_t> m_secondBlockOffsets;
    std::uint64_t m_bytesWritten = 0;
};

}  // namespace zeb
