#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/files/FileHandle.h"

namespace zeb {

/// The header of a movie to be written. The numbers are signed and wide, so that the writer can reject values
/// that do not fit their field.
struct MovieParameters {
    std::string title;       ///< UTF-8; stored as ISO Latin-1 if possible, else as UTF-8
    std::int64_t width = 0;  ///< pixels
    std::int64_t height = 0;
    std::int64_t fps = 0;              ///< frames per second and per block, at least 1
    std::int64_t qlMode = 0;           ///< 4 or 32
    std::int64_t totalFrames = 0;      ///< seconds x fps
    std::int64_t frameIndexCount = 0;  ///< seconds that will be written; not negative
    int audioChannels = 0;             ///< 0 (no sound), 1 or 2
    bool loop = false;                 ///< the movie is meant to loop
};

/// Creates the file for a movie and replaces an existing one. Throws
/// `ZEBConverterError::cannotCreateOutput(path)` on failure.
std::unique_ptr<WritableFile> createMovieFile(const std::string& path);

/// Writes a ZEB file: the header with placeholders at creation, a one-second block per `writeSecond`, and at
/// the end the size of the largest block and the frame index over the placeholders. Used by one thread at a
/// time. Call order: constructor, `writeSecond` for each second, `finish`, `close`. Without `finish` the file
/// keeps a valid header with a zero index, and readers walk the blocks.
///
/// Throws `ZEBWriterError` for values beyond the format's fields and `FileError` for the file. The layout of
/// the file is in `format/Layout.h`.
class ZEBWriter {
public:
    /// Creates the file with `createMovieFile` and writes the header.
    ZEBWriter(const std::string& path, const MovieParameters& movie);
    /// Writes the movie to `handle`, an open and empty file.
    ZEBWriter(std::unique_ptr<WritableFile> handle, const MovieParameters& movie);

    /// Appends one second: its sound and its encoded frames in display order, exactly fps records made by
    /// `SpriteEncoder`. The sound is audioChannels x 20000 bytes, unsigned samples of 8 bits, 128 = silence,
    /// channels interleaved; empty without channels. The numbers of frames and samples are not checked. The
    /// block is passed to the file in one write.
    ///
    /// Throws `ZEBWriterError` if the sound, a frame, the block or the block's offset reaches 4 GiB. Nothing
    /// is written then, unless only the block's length field exceeds the limit. After a failed write the
    /// incomplete block is cut off, so that whole seconds remain. The failed second keeps its entry in the
    /// index: call `close` and `finishPartialFile` instead of `finish`.
    void writeSecond(std::span<const std::uint8_t> sound,
                     std::span<const std::span<const std::uint8_t>> frames);

    /// Writes the largest block size and the index, and flushes the file. Called once, after the last second.
    void finish();

    /// Flushes to disk and closes. The writer cannot be used afterwards.
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
