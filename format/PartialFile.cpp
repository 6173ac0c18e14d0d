#include "format/PartialFile.h"

#include <algorithm>
#include <array>
#include <vector>

#include "format/BigEndian.h"
#include "format/BlockWalker.h"
#include "format/Layout.h"
#include "format/ZEBHeader.h"

namespace zeb {
namespace {

/// An index is worked on in pieces of this many bytes.
constexpr std::size_t pieceSize = 65536;

void writeAt(WritableFile& target, std::uint64_t offset, std::span<const std::uint8_t> bytes) {
    target.seek(offset);
    target.write(bytes);
}

void writeWordAt(WritableFile& target, std::uint64_t offset, std::uint64_t value) {
    std::array<std::uint8_t, layout::wordSize> bytes{};
    bigEndian::store32(bytes, static_cast<std::uint32_t>(value));
    writeAt(target, offset, bytes);
}

/// Writes the offsets of the first `count` blocks. They are walked again instead of kept: a hostile file may
/// have hundreds of millions.
void writeEntries(ReadableFile& source, WritableFile& target, const LocatedHeader& located,
                  std::uint64_t count) {
    BlockWalker walker(source, located);
    std::uint64_t place = located.places.frameIndex;
    std::vector<std::uint8_t> piece;
    for (std::uint64_t entry = 0; entry < count; ++entry) {
        const auto block = walker.next();
        if (!block) break;
        bigEndian::append32(piece, static_cast<std::uint32_t>(block->offset));
        if (piece.size() == pieceSize || entry + 1 == count) {
            writeAt(target, place, piece);
            place += piece.size();
            piece.clear();
        }
    }
}

/// Zeroes begin ... end - 1, writing only where there is something else: the area may be a hole of gigabytes.
void clear(ReadableFile& source, WritableFile& target, std::uint64_t begin, std::uint64_t end) {
    std::vector<std::uint8_t> piece;
    while (begin < end) {
        piece.resize(std::min<std::uint64_t>(pieceSize, end - begin));
        piece.resize(source.readAt(begin, piece));
        if (piece.empty()) return;
        if (std::any_of(piece.begin(), piece.end(), [](std::uint8_t byte) { return byte != 0; })) {
            std::fill(piece.begin(), piece.end(), std::uint8_t{0});
            writeAt(target, begin, piece);
        }
        begin += piece.size();
    }
}

}  // namespace

std::int64_t finishPartialFile(ReadableFile& source, WritableFile& target) {
    const LocatedHeader located = readHeader(source);
    const HeaderPlaces& places = located.places;

    std::uint64_t seconds = 0;
    std::uint32_t largest = 0;
    BlockWalker walker(source, located);
    while (const auto block = walker.next()) {
        ++seconds;
        largest = std::max(largest, block->size);
    }
    if (seconds == 0) return 0;

    // The blocks must be on the disk before anything points at them. The largest block comes last, because it
    // says that the movie is finished; until then zero entries, or none, only make readers walk.
    target.truncate(walker.position());
    target.synchronise();

    // Fits its field: a frame takes at least 4 bytes, and the blocks start within 32 bits.
    writeWordAt(target, places.totalFrames, seconds * static_cast<std::uint64_t>(located.header.fps));
    const std::uint64_t entries = std::min(seconds, places.frameIndexCount);
    writeEntries(source, target, located, entries);
    clear(source, target, places.frameIndex + entries * layout::wordSize, places.data);
    target.synchronise();

    writeWordAt(target, places.maxSecondBlockSize, largest);
    target.seekToEnd();
    target.synchronise();
    return static_cast<std::int64_t>(seconds);
}

std::int64_t finishPartialFile(const std::string& path) {
    const auto source = openForReading(path);
    const auto target = openForUpdating(path);
    const std::int64_t seconds = finishPartialFile(*source, *target);
    target->close();
    return seconds;
}

}  // namespace zeb
