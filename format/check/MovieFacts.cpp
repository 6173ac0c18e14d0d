#include "format/check/MovieFacts.h"

#include <algorithm>
#include <array>
#include <utility>

#include "format/Layout.h"
#include "format/walk/BlockWalker.h"

namespace zeb {

bool isMovie(ReadableFile& file) {
    std::array<std::uint8_t, layout::magic.size()> start{};
    return file.readAt(0, start) == start.size() && start == layout::magic;
}

MovieFacts readMovieFacts(ReadableFile& file) {
    LocatedHeader located = readHeader(file);
    MovieFacts facts;
    facts.fileSize = file.size();
    facts.indexEntries = located.places.frameIndexCount;
    facts.end = located.places.data;

    std::optional<MovieFacts::Damage> damage;
    std::uint64_t bytes = 0;
    BlockWalker walker(file, located);
    while (const auto block = walker.next()) {
        if (!block->isWhole()) {
            if (!damage) damage = MovieFacts::Damage{block->second, block->offset, 0, 0};
            ++damage->seconds;
            continue;
        }
        ++facts.wholeSeconds;
        bytes += block->size();
        facts.largestBlock = std::max(facts.largestBlock, block->size());
        facts.end = block->end;
        if (!damage) continue;
        ++damage->secondsBehind;
        facts.damage = damage;
    }

    ZEBHeader& header = located.header;
    // The largest block is 0 in a finished movie without seconds.
    facts.wasFinished =
        header.frameCount % header.fps == 0 && (header.blockSize != 0 || header.frameCount == 0);
    facts.wholeFrames = facts.wholeSeconds * header.fps;
    facts.isFinished = facts.wasFinished && !facts.damage && facts.wholeFrames == header.frameCount;
    if (facts.wholeSeconds > 0)
        facts.bytesPerSecond = static_cast<double>(bytes) / static_cast<double>(facts.wholeSeconds);
    facts.header = std::move(header);
    return facts;
}

}  // namespace zeb
