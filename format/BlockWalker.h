#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "format/ZEBHeader.h"
#include "platform/FileHandle.h"

namespace zeb {

/// Goes through the one-second blocks of a file from its first, reading nothing but their size fields. Stops
/// before the first block that is not whole: one that passes the end of the file, whose sound and fps frames
/// do not fill it exactly, or that starts or counts beyond 32 bits. Works in fixed memory.
class BlockWalker {
public:
    struct Block {
        std::uint64_t offset;  ///< in the file, of the block-length field
        std::uint32_t size;    ///< in bytes, with that field
    };

    /// `file` must outlive the walker and keep its size. Throws `FileError`, as `next` does.
    BlockWalker(ReadableFile& file, const LocatedHeader& located);

    /// The next whole block; nothing, from then on, when there is none.
    std::optional<Block> next();

    /// The end of the last block that `next` returned, or the start of the data before the first one.
    std::uint64_t position() const noexcept { return m_position; }

private:
    std::optional<std::uint32_t> read32(std::uint64_t offset);

    ReadableFile& m_file;
    std::uint64_t m_fileSize;
    std::uint64_t m_position;
    int m_fps;
    // The last piece read. Small, because mostly the next field lies far away; not tiny, because a hostile
    // file may consist of nothing but fields.
    std::array<std::uint8_t, 4096> m_piece{};
    std::uint64_t m_pieceOffset = 0;
    std::size_t m_pieceLength = 0;
};

}  // namespace zeb
