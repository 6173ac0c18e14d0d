#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "platform/files/FileHandle.h"

namespace zeb {

/// Goes through a file from position to position. Small reads are served from a piece read ahead; what is
/// skipped is not read. Sizes are believed only as far as the file reaches at that moment.
class FileCursor {
public:
    explicit FileCursor(std::unique_ptr<ReadableFile> file);
    /// On a file that belongs to someone else and must outlive the cursor.
    explicit FileCursor(ReadableFile& file) noexcept : m_file(&file) {}

    ReadableFile& file() const noexcept { return *m_file; }
    std::uint64_t position() const noexcept { return m_position; }
    void seek(std::uint64_t position) noexcept { m_position = position; }
    /// Bytes from the position to the end of the file as of now.
    std::uint64_t remaining();

    /// Reads up to `target.size()` bytes and moves past them; returns how many arrived, fewer only at the end
    /// of the file. Throws `FileError`.
    std::size_t read(std::span<std::uint8_t> target);
    /// Reads 4 bytes, most significant first; nothing when the file ends before.
    std::optional<std::uint32_t> readWord();
    /// Moves on to the first of the words from here that is not 0, at most to `end`, or to the end of the
    /// file.
    void skipZeroWords(std::uint64_t end);
    /// Moves on by `count` bytes; false, at the end of the file, when it has fewer.
    bool skip(std::uint64_t count);

private:
    bool loadPiece();

    std::unique_ptr<ReadableFile> m_owned;
    ReadableFile* m_file;
    std::uint64_t m_position = 0;
    // Small, because mostly the next field lies far away; not tiny, because a hostile file may consist of
    // nothing but fields.
    std::array<std::uint8_t, 4096> m_piece{};
    std::uint64_t m_pieceOffset = 0;
    std::size_t m_pieceLength = 0;
};

}  // namespace zeb
