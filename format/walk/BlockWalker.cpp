#include "format/walk/BlockWalker.h"

#include <algorithm>

#include "format/Layout.h"

namespace zeb {

BlockWalker::BlockWalker(ReadableFile& file, const LocatedHeader& located)
    : m_blocks(file),
      m_index(file),
      m_fileSize(file.size()),
      m_places(located.places),
      m_fps(static_cast<std::uint64_t>(located.header.fps)),
      m_smallestBlock(layout::wordSize * (2 + m_fps)),
      m_position(located.places.data) {}

std::optional<BlockWalker::Block> BlockWalker::next() {
    if (m_lost > 0) {
        --m_lost;
        return Block{m_second++, m_position, m_position, State::damaged};
    }
    const std::uint64_t left = m_fileSize - std::min(m_fileSize, m_position);
    if (m_position > layout::maxWord || left < layout::wordSize || !wordAt(m_position)) return std::nullopt;
    const std::optional<std::uint64_t> end = endOfWhole(m_position);
    if (!end) return passDamage();
    const Block block{m_second, m_position, *end, State::whole};
    ++m_second;
    m_position = *end;
    return block;
}

/// Returns the block at the position, which is not whole, up to the start of the next second.
BlockWalker::Block BlockWalker::passDamage() {
    Block block{m_second, m_position, m_fileSize, State::damaged};
    ++m_second;
    const std::optional<std::uint64_t> entry = indexEntry(m_second);
    const auto indexed = entry > block.offset && entry <= m_fileSize ? entry : std::nullopt;
    const std::optional<std::uint64_t> announced = announcedEnd(block.offset);
    bool leadsOn = false;
    for (const auto& place : {indexed, announced, endOfParts(block.offset, m_fileSize)}) {
        if (!place || *place >= block.end || !endOfWhole(*place)) continue;
        block.end = *place;
        leadsOn = true;
    }
    if (!leadsOn) {
        // The next block is damaged too. It must start before the next whole one.
        const bool hasLead = findLead(block.offset);
        if (hasLead) block.end = *indexEntry(m_lead);
        if (indexed && *indexed < block.end) {
            block.end = *indexed;
        } else if (announced && (*announced < block.end || !hasLead)) {
            block.end = *announced;
        } else if (hasLead) {
            m_lost = m_lead - m_second;
        } else {
            block.state = State::torn;
        }
    }
    m_position = block.end;
    return block;
}

/// Makes `m_lead` the first index entry, from the second after the next on, that leads to a whole block after
/// `offset`; returns false if there is none.
bool BlockWalker::findLead(std::uint64_t offset) {
    // Maximum number of seconds after `offset`. Later index entries cannot be valid.
    const std::uint64_t room = (std::min(m_fileSize, layout::maxWord) - offset) / m_smallestBlock;
    const std::uint64_t count =
        std::min(m_places.frameIndexCount, static_cast<std::uint64_t>(m_second) + room + 1);
    bool isFound = false;
    auto entry = static_cast<std::uint64_t>(std::max(m_lead, m_second + 1));
    for (; entry < count; ++entry) {
        m_index.seek(m_places.frameIndex + entry * layout::wordSize);
        m_index.skipZeroWords(m_places.frameIndex + count * layout::wordSize);
        entry = (m_index.position() - m_places.frameIndex) / layout::wordSize;
        const std::optional<std::uint64_t> place = indexEntry(static_cast<std::int64_t>(entry));
        isFound = entry < count && place && *place > offset && endOfWhole(*place);
        if (isFound) break;
    }
    m_lead = static_cast<std::int64_t>(entry);
    return isFound;
}

void BlockWalker::seekTo(std::int64_t second) {
    restart();
    const std::optional<std::uint64_t> place = indexEntry(second);
    if (place && lengthsLeadTo(second, *place)) {
        m_second = second;
        m_position = *place;
        return;
    }
    while (m_second < second && next()) {
    }
}

void BlockWalker::restart() {
    m_second = 0;
    m_position = m_places.data;
    m_lost = 0;
    m_lead = 0;
}

/// Returns true if the lengths of the blocks before `second` lead from block to block to `offset`.
bool BlockWalker::lengthsLeadTo(std::int64_t second, std::uint64_t offset) {
    std::optional<std::uint64_t> position = m_places.data;
    for (; second > 0 && position && *position < offset; --second)
        position = announcedEnd(*position);
    return second == 0 && position == offset;
}

std::optional<std::uint64_t> BlockWalker::indexedBlock(std::int64_t second) {
    const std::optional<std::uint64_t> place = indexEntry(second);
    if (!place || !endOfWhole(*place)) return std::nullopt;
    if (second == 0) return *place == m_places.data ? place : std::nullopt;
    const std::optional<std::uint64_t> before = indexEntry(second - 1);
    const std::optional<std::uint64_t> end = before ? endOfWhole(*before) : std::nullopt;
    return !end || end == place ? place : std::nullopt;
}

std::optional<std::uint64_t> BlockWalker::indexEntry(std::int64_t second) {
    const auto entry = static_cast<std::uint64_t>(second);
    if (entry >= m_places.frameIndexCount) return std::nullopt;
    m_index.seek(m_places.frameIndex + entry * layout::wordSize);
    const std::optional<std::uint32_t> offset = m_index.readWord();
    if (!offset || *offset < m_places.data) return std::nullopt;
    return *offset;
}

/// Returns the end of the whole block at `offset`; nothing if no whole block starts there.
std::optional<std::uint64_t> BlockWalker::endOfWhole(std::uint64_t offset) {
    const std::optional<std::uint64_t> end = announcedEnd(offset);
    if (!end || offset > layout::maxWord || *end - offset > layout::maxWord) return std::nullopt;
    return endOfParts(offset, *end) == end ? end : std::nullopt;
}

/// Returns the end of the block at `offset` from its sound and frame sizes; nothing if they pass `limit`.
std::optional<std::uint64_t> BlockWalker::endOfParts(std::uint64_t offset, std::uint64_t limit) {
    std::uint64_t position = offset + layout::wordSize;
    // The sound and each frame are a size field and that many bytes.
    for (std::uint64_t part = 0; part < 1 + m_fps; ++part) {
        if (limit - position < layout::wordSize) return std::nullopt;
        const std::optional<std::uint32_t> size = wordAt(position);
        position += layout::wordSize;
        if (!size || *size > limit - position) return std::nullopt;
        position += *size;
    }
    return position;
}

/// Returns the end of the block at `offset` from its length field; nothing if the length cannot be valid.
std::optional<std::uint64_t> BlockWalker::announcedEnd(std::uint64_t offset) {
    const std::optional<std::uint32_t> length = wordAt(offset);
    if (!length) return std::nullopt;
    const std::uint64_t size = layout::wordSize + *length;
    if (size < m_smallestBlock || size > m_fileSize - std::min(m_fileSize, offset)) return std::nullopt;
    return offset + size;
}

std::optional<std::uint32_t> BlockWalker::wordAt(std::uint64_t offset) {
    m_blocks.seek(offset);
    return m_blocks.readWord();
}

}  // namespace zeb
