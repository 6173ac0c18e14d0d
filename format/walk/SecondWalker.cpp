#include "format/walk/SecondWalker.h"

#include <utility>

#include "format/Layout.h"
#include "format/walk/FrameRecord.h"

namespace zeb {

SecondWalker::SecondWalker(std::unique_ptr<ReadableFile> file)
    : m_file(std::move(file)),
      m_located(readHeader(*m_file)),
      m_cursor(*m_file),
      m_blocks(*m_file, m_located) {}

std::optional<SecondWalker::Second> SecondWalker::next() {
    const std::optional<BlockWalker::Block> block = m_blocks.next();
    if (!block) return std::nullopt;
    Second second;
    second.number = block->second;
    second.state = block->state;
    const bool isTorn = block->state == BlockWalker::State::torn;
    if (block->size() > 0) collectParts(block->offset + layout::wordSize, block->end, second);
    second.frameCount = isTorn ? static_cast<int>(second.frames.size()) : header().fps;
    if (isTorn && second.frames.empty() && second.sound.size == 0) return std::nullopt;
    return second;
}

/// Collects a block's parts from `start` up to `end`.
void SecondWalker::collectParts(std::uint64_t start, std::uint64_t end, Second& second) {
    std::uint64_t position = start;
    for (int part = 0; part < 1 + header().fps && end - position >= layout::wordSize; ++part) {
        m_cursor.seek(position);
        const std::optional<std::uint32_t> size = m_cursor.readWord();
        if (!size) break;
        const std::uint64_t partStart = position + layout::wordSize;
        if (*size > end - partStart) {
            // A part of the sound is useful; a part of a picture is not.
            if (part == 0) second.sound = {partStart, static_cast<std::uint32_t>(end - partStart)};
            break;
        }
        const Piece piece{partStart, *size};
        if (part == 0) {
            second.sound = piece;
        } else {
            second.frames.push_back(piece);
        }
        position = partStart + *size;
    }
}

bool SecondWalker::read(const Piece& piece, std::vector<std::uint8_t>& target) {
    target.resize(piece.size);
    m_cursor.seek(piece.offset);
    target.resize(m_cursor.read(target));
    return target.size() == piece.size;
}

void SecondWalker::readFrame(const Piece& piece, std::vector<std::uint8_t>& target) {
    m_cursor.seek(piece.offset);
    readFrameRecord(m_cursor, piece.size, header().width, header().height, target);
}

}  // namespace zeb
