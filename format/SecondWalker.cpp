#include "format/SecondWalker.h"

#include <array>
#include <utility>

#include "format/BigEndian.h"
#include "format/Layout.h"

namespace zeb {

SecondWalker::SecondWalker(std::unique_ptr<ReadableFile> file)
    : m_located(readHeader(*file)), m_file(std::move(file)), m_position(m_located.places.data) {}

std::optional<std::uint32_t> SecondWalker::word() {
    std::array<std::uint8_t, layout::wordSize> bytes{};
    if (m_file.read(bytes) < bytes.size()) return std::nullopt;
    return bigEndian::load32(bytes);
}

std::optional<std::uint64_t> SecondWalker::indexEntry(std::int64_t number) {
    const HeaderPlaces& places = m_located.places;
    const auto entry = static_cast<std::uint64_t>(number);
    if (entry >= places.frameIndexCount) return std::nullopt;
    m_file.seek(places.frameIndex + entry * layout::wordSize);
    const std::optional<std::uint32_t> offset = word();
    if (!offset || *offset < places.data) return std::nullopt;
    return *offset;
}

void SecondWalker::seekTo(std::int64_t number) {
    if (const std::optional<std::uint64_t> entry = indexEntry(number)) {
        m_file.seek(*entry);
        if (m_file.remaining() > 0) {
            m_position = *entry;
            m_number = number;
            return;
        }
    }
    m_position = m_located.places.data;
    m_number = 0;
    while (m_number < number && next()) {
    }
}

std::optional<SecondWalker::Second> SecondWalker::next() {
    m_file.seek(m_position);
    const std::uint64_t fileEnd = m_position + m_file.remaining();
    const std::optional<std::uint32_t> length = word();
    if (!length) return std::nullopt;
    const std::uint64_t start = m_position + layout::wordSize;
    const std::uint64_t announcedEnd = start + *length;
    const int fps = header().fps;
    Second second;
    second.number = m_number++;

    std::uint64_t end = announcedEnd;
    bool isLast = false;
    const bool isWhole = announcedEnd <= fileEnd &&
                         collectParts(start, announcedEnd, second) == announcedEnd &&
                         second.frames.size() == static_cast<std::size_t>(fps);
    if (!isWhole) {
        const std::uint64_t smallest = layout::wordSize * (1 + static_cast<std::uint64_t>(fps));
        const std::optional<std::uint64_t> entry = indexEntry(m_number);
        if (entry && *entry > start && *entry < fileEnd) {
            end = *entry;
        } else if (*length < smallest || announcedEnd > fileEnd) {
            isLast = true;
            end = fileEnd;
        }
        collectParts(start, end, second);
    }
    m_position = end;
    second.frameCount = isLast ? static_cast<int>(second.frames.size()) : fps;
    if (isLast && second.frames.empty() && second.sound.size == 0) return std::nullopt;
    return second;
}

std::uint64_t SecondWalker::collectParts(std::uint64_t start, std::uint64_t end, Second& second) {
    second.sound = {};
    second.frames.clear();
    std::uint64_t position = start;
    for (int part = 0; part < 1 + header().fps && end - position >= layout::wordSize; ++part) {
        m_file.seek(position);
        const std::optional<std::uint32_t> size = word();
        if (!size) break;
        const std::uint64_t partStart = position + layout::wordSize;
        if (*size > end - partStart) {
            // Half a second's sound is worth having; half a picture is not.
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
    return position;
}

bool SecondWalker::read(const Piece& piece, std::vector<std::uint8_t>& target) {
    target.resize(piece.size);
    m_file.seek(piece.offset);
    target.resize(m_file.read(target));
    return target.size() == piece.size;
}

}  // namespace zeb
