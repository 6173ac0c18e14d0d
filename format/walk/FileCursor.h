#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

#include "platform/files/FileHandle.h"

namespace zeb {

/// Reads a file at a position that can be moved. Small reads are served from a piece read ahead; skipped
/// bytes are not read. A size field is limited by the current length of the file.
class FileCursor {
public:
    explicit FileCursor(std::unique_ptr<ReadableFile> file);
    /// Reads a file owned by the caller, which must outlive the cursor.
    explicit FileCursor(ReadableFile& file) noexcept : m_file(&file) {}

    ReadableFile& file() const noexcept { return *m_file; }
    std::uint64_t position() const noexcept { return m_position; }
    void seek(std::uint64_t position) noexcept { m_position = position; }
    /// Returns the number of bytes from the position to the current end of the file.
    std::uint64_t remaining();

    /// Reads up to `target.size()` bytes and moves past them. Returns the number of bytes read, fewer only at
    /// the end of the file. Throws `FileError`.
    std::size_t read(std::span<std::uint8_t> target);
    /// Reads a big-endian integer of 4 bytes; returns nothing if the file has fewer.
    std::optional<std::uint32_t> readWord();
    /// Moves to the first 4-byte word from the position on that is not 0, but not beyond `end` or the end of
    /// the file.
    void skipZeroWords(std::uint64_t end);
    /// Moves forward by `count` bytes. If the file has fewer, moves to its end and returns false.
    bool skip(std::uint64_t count);

private:
    bool loadPiece();

    std::unique_ptr<ReadableFile> m_owned;
    ReadableFile* m_file;
    std::uint64_t m_position = 0;
    // Small, because the next field is usually far away. Not tiny, because a hostile file may consist of
    // fields only.
    std::array<std::uint8_t, 4096> m_piece{};
    std::uint64_t m_pieceOffset = 0;
    std::size_t m_pieceLength = 0;
};

}  // namespace zeb
