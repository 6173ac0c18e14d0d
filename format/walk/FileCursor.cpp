#include "format/walk/FileCursor.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "format/BigEndian.h"

namespace zeb {

FileCursor::FileCursor(std::unique_ptr<ReadableFile> file)
    : m_owned(std::move(file)), m_file(m_owned.get()) {}

std::uint64_t FileCursor::remaining() {
    const std::uint64_t size = m_file->size();
    return size > m_position ? size - m_position : 0;
}

std::size_t FileCursor::read(std::span<std::uint8_t> target) {
    std::size_t done = 0;
    if (m_position >= m_pieceOffset && m_position < m_pieceOffset + m_pieceLength) {
        const auto within = static_cast<std::size_t>(m_position - m_pieceOffset);
        done = std::min(target.size(), m_pieceLength - within);
        std::copy_n(m_piece.begin() + static_cast<std::ptrdiff_t>(within), done, target.begin());
        m_position += done;
    }
    target = target.subspan(done);
    if (target.size() >= m_piece.size()) {
        const std::size_t count = m_file->readAt(m_position, target);
        m_position += count;
        return done + count;
    }
    if (!target.empty()) {
        loadPiece();
        const std::size_t count = std::min(target.size(), m_pieceLength);
        std::copy_n(m_piece.begin(), count, target.begin());
        m_position += count;
        done += count;
    }
    return done;
}

std::optional<std::uint32_t> FileCursor::readWord() {
    std::array<std::uint8_t, 4> bytes{};
    if (read(bytes) < bytes.size()) return std::nullopt;
    return bigEndian::load32(bytes);
}

/// Reads the piece that starts at the position; returns false at the end of the file.
bool FileCursor::loadPiece() {
    m_pieceLength = 0;  // in case reading throws
    m_pieceLength = m_file->readAt(m_position, m_piece);
    m_pieceOffset = m_position;
    return m_pieceLength > 0;
}

void FileCursor::skipZeroWords(std::uint64_t end) {
    constexpr std::uint64_t wordSize = 4;
    const std::uint64_t start = m_position;
    while (m_position < end) {
        const bool isInPiece = m_position >= m_pieceOffset && m_position < m_pieceOffset + m_pieceLength;
        if (!isInPiece && !loadPiece()) return;
        const std::uint64_t stop = std::min(m_pieceOffset + m_pieceLength, end);
        const auto bytes =
            std::span<const std::uint8_t>(m_piece).subspan(m_position - m_pieceOffset, stop - m_position);
        // All bytes are 0 if the first is 0 and each equals its neighbour. This is fast, because an index may
        // be a hole of gigabytes.
        const bool allZero =
            bytes[0] == 0 && std::memcmp(bytes.data(), bytes.data() + 1, bytes.size() - 1) == 0;
        if (!allZero) {
            const auto found = std::find_if(bytes.begin(), bytes.end(), [](auto byte) { return byte != 0; });
            const std::uint64_t zeros =
                m_position - start + static_cast<std::uint64_t>(found - bytes.begin());
            m_position = start + zeros / wordSize * wordSize;
            return;
        }
        m_position = stop;
    }
}

bool FileCursor::skip(std::uint64_t count) {
    const bool isInPiece = m_position >= m_pieceOffset && m_position + count <= m_pieceOffset + m_pieceLength;
    const std::uint64_t available = isInPiece ? count : std::min(count, remaining());
    m_position += available;
    return available == count;
}

}  // namespace zeb
