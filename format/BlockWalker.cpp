#include "format/BlockWalker.h"

#include "format/BigEndian.h"
#include "format/Layout.h"

namespace zeb {

BlockWalker::BlockWalker(ReadableFile& file, const LocatedHeader& located)
    : m_file(file), m_fileSize(file.size()), m_position(located.places.data), m_fps(located.header.fps) {}

std::optional<BlockWalker::Block> BlockWalker::next() {
    if (m_position > layout::maxWord) return std::nullopt;
    const auto blockLength = read32(m_position);
    if (!blockLength) return std::nullopt;
    const std::uint64_t size = layout::wordSize + *blockLength;
    if (size > layout::maxWord || size > m_fileSize - m_position) return std::nullopt;

    const std::uint64_t end = m_position + size;
    std::uint64_t position = m_position + layout::wordSize;
    // The sound and each frame alike: a size and as many bytes.
    for (int part = 0; part < 1 + m_fps; ++part) {
        if (end - position < layout::wordSize) return std::nullopt;
        const auto partSize = read32(position);
        position += layout::wordSize;
        if (!partSize || *partSize > end - position) return std::nullopt;
        position += *partSize;
    }
    if (position != end) return std::nullopt;

    const Block block{m_position, static_cast<std::uint32_t>(size)};
    m_position = end;
    return block;
}

std::optional<std::uint32_t> BlockWalker::read32(std::uint64_t offset) {
    const std::uint64_t pieceEnd = m_pieceOffset + m_pieceLength;
    if (offset < m_pieceOffset || offset + layout::wordSize > pieceEnd) {
        m_pieceOffset = offset;
        m_pieceLength = m_file.readAt(offset, m_piece);
        if (m_pieceLength < layout::wordSize) return std::nullopt;
    }
    const std::span<const std::uint8_t> piece(m_piece);
    return bigEndian::load32(piece.subspan(offset - m_pieceOffset).first<layout::wordSize>());
}

}  // namespace zeb
