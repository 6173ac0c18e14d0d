#pragma once

#include <cstdint>
#include <optional>

#include "format/ZEBHeader.h"
#include "format/walk/FileCursor.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// Walks the seconds of a movie from the first on and returns the positions of their blocks. Reads size
/// fields only, in fixed memory.
///
/// A block is whole if it lies within the file, its sound and fps frames fill it exactly, and its start and
/// size fit into 32 bits. The next second begins where a whole block ends. After any other block the walk
/// continues at the nearest whole block found through an index entry, the block's length or its parts. An
/// index entry is used only if a whole block starts there.
class BlockWalker {
public:
    enum class State {
        whole,
        damaged,  ///< not whole, and the movie continues after it
        torn,     ///< not whole, and no later block is found: the movie ends within it
    };
    struct Block {
        std::int64_t second = 0;   ///< number of the second, from 0
        std::uint64_t offset = 0;  ///< bytes from the start of the file to the block-length field
        std::uint64_t end = 0;     ///< offset of the next block; equal to `offset` if no byte of it is left
        State state = State::whole;

        bool isWhole() const { return state == State::whole; }
        std::uint64_t size() const { return end - offset; }
    };

    /// `file` must outlive the walker and keep its size. All functions throw `FileError`.
    BlockWalker(ReadableFile& file, const LocatedHeader& located);

    /// Returns the next second; nothing at the end.
    std::optional<Block> next();

    /// Makes `second` the next one. Uses its index entry if the lengths of the blocks before lead to the same
    /// offset, which reads one word per block. Otherwise walks the blocks from the first one on.
    void seekTo(std::int64_t second);

    /// Returns the offset of a second's block from the index; nothing unless a whole block starts there.
    std::optional<std::uint64_t> indexedBlock(std::int64_t second);

private:
    std::optional<std::uint32_t> wordAt(std::uint64_t offset);
    std::optional<std::uint64_t> indexEntry(std::int64_t second);
    std::optional<std::uint64_t> endOfWhole(std::uint64_t offset);
    std::optional<std::uint64_t> endOfParts(std::uint64_t offset, std::uint64_t limit);
    std::optional<std::uint64_t> announcedEnd(std::uint64_t offset);
    Block passDamage();
    bool findLead(std::uint64_t offset);
    bool lengthsLeadTo(std::int64_t second, std::uint64_t offset);
    void restart();

    FileCursor m_blocks;
    FileCursor m_index;
    std::uint64_t m_fileSize;
    HeaderPlaces m_places;
    std::uint64_t m_fps;
    std::uint64_t m_smallestBlock;
    std::int64_t m_second = 0;  ///< number of the next second
    std::uint64_t m_position;   ///< offset of the next second's block
    std::int64_t m_lost = 0;    ///< seconds from `m_second` on without a byte in the file
    std::int64_t m_lead = 0;    ///< earlier index entries lead to no whole block after the damage
};

}  // namespace zeb
