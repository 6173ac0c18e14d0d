#include "format/check/PartialFile.h"

#include <algorithm>
#include <array>
#include <optional>
#include <span>
#include <vector>

#include "format/BigEndian.h"
#include "format/Layout.h"
#include "format/ZEBErrors.h"
#include "format/walk/BlockWalker.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// The index is processed in pieces of this many bytes, a multiple of the entry size.
constexpr std::size_t indexPiece = 65536;
/// Blocks are copied in pieces of this many bytes.
constexpr std::size_t copyPiece = 1 << 20;

void writeAt(WritableFile& target, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    target.seek(offset);
    target.write(bytes);
}

void writeWordAt(WritableFile& target, std::uint64_t offset, std::uint64_t value) {
    std::array<std::uint8_t, layout::wordSize> bytes{};
    bigEndian::store32(bytes, static_cast<std::uint32_t>(value));
    writeAt(target, offset, bytes);
}

std::optional<BlockWalker::Block> nextWhole(BlockWalker& walker) {
    std::optional<BlockWalker::Block> block = walker.next();
    while (block && !block->isWhole())
        block = walker.next();
    return block;
}

/// Copies begin ... end - 1 to the write position of `target`.
void copyRange(ReadableFile& source, std::uint64_t begin, std::uint64_t end, WritableFile& target) {
    Bytes piece;
    while (begin < end) {
        piece.resize(std::min<std::uint64_t>(copyPiece, end - begin));
        const std::size_t count = source.readAt(begin, piece);
        if (count == 0) return;  // the file was cut after the walk
        target.write(std::span(piece).first(count));
        begin += count;
    }
}

}  // namespace

PartialFile::PartialFile(ReadableFile& source)
    : m_source(source), m_located(readHeader(source)), m_facts(readMovieFacts(source)) {}

/// Calls `visit(place, bytes)` for each piece of the index of a movie that has the whole seconds back to
/// back. Walks the blocks again instead of keeping their positions: a hostile file may have hundreds of
/// millions.
template <typename Visit>
void PartialFile::composeIndex(const Visit& visit) {
    const HeaderPlaces& places = m_located.places;
    BlockWalker walker(m_source, m_located);
    std::optional<BlockWalker::Block> block = nextWhole(walker);
    std::uint64_t entriesLeft = places.frameIndexCount;
    std::uint64_t position = places.data;
    Bytes piece;
    for (std::uint64_t place = places.frameIndex; place < places.data; place += piece.size()) {
        piece.clear();
        for (; block && entriesLeft > 0 && piece.size() < indexPiece; --entriesLeft) {
            bigEndian::append32(piece, static_cast<std::uint32_t>(position));
            position += block->size();
            block = nextWhole(walker);
        }
        // Zeros after the last entry. An index of gigabytes may be a hole in the file and remains one.
        piece.resize(std::min<std::uint64_t>(indexPiece, places.data - place));
        visit(place, piece);
    }
}

bool PartialFile::isComplete() {
    const ZEBHeader& header = m_located.header;
    if (m_facts.damage || m_facts.end != m_facts.fileSize || m_facts.wholeFrames != header.frameCount ||
        m_facts.largestBlock != static_cast<std::uint64_t>(header.blockSize))
        return false;
    bool isRight = true;
    Bytes standing;
    composeIndex([&](std::uint64_t place, const Bytes& piece) {
        standing.resize(piece.size());
        isRight = isRight && m_source.readAt(place, standing) == piece.size() && standing == piece;
    });
    return isRight;
}

void PartialFile::finish(WritableFile& target) {
    if (const auto& damage = m_facts.damage)
        throw MovieDamageError(damage->firstSecond, damage->offset, damage->secondsBehind);
    if (m_facts.wholeSeconds == 0 || isComplete()) return;

    // The blocks must be on the disk before a field refers to them. The largest block is written last,
    // because it marks the movie as finished; until then zero or missing index entries only make readers
    // walk.
    target.truncate(m_facts.end);
    target.synchronise();

    // The number fits its field: a frame takes at least 4 bytes, and the blocks start within 32 bits.
    writeWordAt(target, m_located.places.totalFrames, static_cast<std::uint64_t>(m_facts.wholeFrames));
    Bytes standing;
    composeIndex([&](std::uint64_t place, const Bytes& piece) {
        standing.resize(piece.size());
        standing.resize(m_source.readAt(place, standing));
        if (standing != piece) writeAt(target, place, piece);
    });
    target.synchronise();

    writeWordAt(target, m_located.places.maxSecondBlockSize, m_facts.largestBlock);
    target.synchronise();
}

void PartialFile::copyWholeSeconds(WritableFile& target) {
    const HeaderPlaces& places = m_located.places;
    copyRange(m_source, 0, places.frameIndex, target);
    target.truncate(places.data);
    composeIndex([&](std::uint64_t place, const Bytes& piece) {
        const bool isEmpty = std::all_of(piece.begin(), piece.end(), [](auto byte) { return byte == 0; });
        if (!isEmpty) writeAt(target, place, piece);
    });
    target.seek(places.data);
    BlockWalker walker(m_source, m_located);
    while (const auto block = nextWhole(walker))
        copyRange(m_source, block->offset, block->end, target);
    writeWordAt(target, places.totalFrames, static_cast<std::uint64_t>(m_facts.wholeFrames));
    writeWordAt(target, places.maxSecondBlockSize, m_facts.largestBlock);
    target.synchronise();
}

std::int64_t finishPartialFile(ReadableFile& source, WritableFile& target) {
    PartialFile file(source);
    file.finish(target);
    return file.facts().wholeSeconds;
}

std::int64_t finishPartialFile(const std::string& path) {
    const auto source = openForReading(path);
    PartialFile file(*source);
    if (!file.isComplete()) {
        const auto target = openForUpdating(path);
        file.finish(*target);
        target->close();
    }
    return file.facts().wholeSeconds;
}

}  // namespace zeb
