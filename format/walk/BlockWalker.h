#pragma once

#include <cstdint>
#include <optional>

#include "format/ZEBHeader.h"
#include "format/walk/FileCursor.h"
#include "platform/files/FileHandle.h"

namespace zeb {

/// Goes through the seconds of a movie from its first and tells where their blocks stand. Reads size fields
/// only, in fixed memory.
///
/// A block is whole when it lies in the file, its sound and fps frames fill it exactly, and its start and
/// size fit into 32 bits. A whole block tells where the next second begins. Behind any other one the walk
/// goes on at the nearest whole block that an entry of the index, the block's length or its parts lead to; an
/// entry of the index counts only when a whole block stands there.
class BlockWalker {
public:
    enum class State {
        whole,
        damaged,  ///< not whole, and the movie goes on behind it
        torn,     ///< not whole, and nothing leads on: the movie ends within it
    };
    struct Block {
        std::int64_t second = 0;   ///< number of the second, from 0
        std::uint64_t offset = 0;  ///< bytes from the start of the file to the block-length field
        std::uint64_t end = 0;  ///< bytes from there to the next block; `offset` when nothing of it is left
        State state = State::whole;

        bool isWhole() const { return state == State::whole; }
        std::uint64_t size() const { return end - offset; }
    };

    /// `file` must outlive the walker and keep its size. Throws `FileError`, as the other functions do.
    BlockWalker(ReadableFile& file, const LocatedHeader& located);

    /// The next second; nothing at the end.
    std::optional<Block> next();

    /// Makes `second` the next one. Its entry in the index is taken when the lengths of the blocks before
    /// lead there, too: one word is read for each. Otherwise the blocks are walked from the first one on.
    void seekTo(std::int64_t second);

    /// The place of a second's block as the index has it; nothing unless a whole block stands there.
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
    std::int64_t m_second = 0;  ///< the next one
    std::uint64_t m_position;   ///< of its block
    std::int64_t m_lost = 0;    ///< seconds from `m_second` on of which nothing is left
    std::int64_t m_lead = 0;  ///< no entry of the index before this one leads to a whole block behind damage
};

}  // namespace zeb
