#include "format/MovieFacts.h"

#include <algorithm>
#include <array>

#include "format/BigEndian.h"
#include "format/BlockWalker.h"
#include "format/Layout.h"

namespace zeb {
namespace {

std::optional<std::uint32_t> wordAt(ReadableFile& file, std::uint64_t offset) {
    std::array<std::uint8_t, layout::wordSize> bytes{};
    if (file.readAt(offset, bytes) < bytes.size()) return std::nullopt;
    return bigEndian::load32(bytes);
}

/// Whether the index has an entry for the last of `seconds` blocks, and that block ends where the file ends:
/// two small reads that spare walking a film of hours.
bool lastBlockEndsFile(ReadableFile& file, const HeaderPlaces& places, std::uint64_t seconds,
                       std::uint64_t fileSize) {
    if (seconds == 0 || seconds > places.frameIndexCount) return false;
    const auto offset = wordAt(file, places.frameIndex + (seconds - 1) * layout::wordSize);
    if (!offset || *offset < places.data) return false;
    const auto blockLength = wordAt(file, *offset);
    return blockLength && std::uint64_t{*offset} + layout::wordSize + *blockLength == fileSize;
}

}  // namespace

bool isMovie(ReadableFile& file) {
    std::array<std::uint8_t, layout::magic.size()> start{};
    return file.readAt(0, start) == start.size() && start == layout::magic;
}

MovieFacts readMovieFacts(ReadableFile& file) {
    LocatedHeader located = readHeader(file);
    const HeaderPlaces& places = located.places;
    const std::int64_t fps = located.header.fps;
    const std::int64_t announced = located.header.frameCount / fps;
    // A movie without a second has no largest block.
    const bool isRecorded = located.header.frameCount % fps == 0 &&
                            (located.header.blockSize != 0 || located.header.frameCount == 0);

    MovieFacts facts;
    facts.fileSize = file.size();
    facts.indexEntries = places.frameIndexCount;
    std::uint64_t dataEnd = facts.fileSize;
    if (isRecorded &&
        lastBlockEndsFile(file, places, static_cast<std::uint64_t>(announced), facts.fileSize)) {
        facts.isFinished = true;
        facts.wholeSeconds = announced;
        facts.largestBlock = static_cast<std::uint64_t>(located.header.blockSize);
    } else {
        BlockWalker walker(file, located);
        while (const auto block = walker.next()) {
            ++facts.wholeSeconds;
            facts.largestBlock = std::max<std::uint64_t>(facts.largestBlock, block->size);
        }
        dataEnd = walker.position();
        facts.isFinished = isRecorded && facts.wholeSeconds == announced;
    }
    facts.wholeFrames = facts.wholeSeconds * fps;
    if (facts.wholeSeconds > 0)
        facts.bytesPerSecond =
            static_cast<double>(dataEnd - places.data) / static_cast<double>(facts.wholeSeconds);
    facts.header = std::move(located.header);
    return facts;
}

}  // namespace zeb
