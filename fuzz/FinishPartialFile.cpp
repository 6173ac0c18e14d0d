// Finishes a file of any bytes in place and as a copy: the result contains every whole second.

#include "format/ZEBErrors.h"
#include "format/ZEBReader.h"
#include "format/check/MovieFacts.h"
#include "format/check/PartialFile.h"
#include "format/walk/BlockWalker.h"
#include "fuzz/FuzzInput.h"
#include "tests/format/MemoryFile.h"

using namespace zeb;

namespace {

[[maybe_unused]] const bool isQuiet = std::freopen("/dev/null", "w", stdout) != nullptr;

void checkMovie(const fuzz::Bytes& bytes, std::int64_t seconds) {
    test::MemoryReadableFile file(bytes);
    const MovieFacts facts = readMovieFacts(file);
    fuzz::require(facts.isFinished && facts.wholeSeconds == seconds, "finished, with the seconds promised");
    fuzz::require(facts.header.frameCount == facts.wholeFrames, "counts its frames");

    ZEBReader reader([&] { return std::make_unique<test::MemoryReadableFile>(bytes); });
    const ZEBHeader header = reader.readHeader();
    BlockWalker walker(file, readHeader(file));
    std::uint64_t largest = 0;
    for (std::size_t i = 0;; ++i) {
        const auto block = walker.next();
        fuzz::require(block.has_value() == (static_cast<std::int64_t>(i) < seconds), "that many blocks");
        if (block) fuzz::require(block->isWhole(), "nothing but whole ones");
        if (block) largest = std::max(largest, block->size());
        const bool hasEntry = i < header.indexOffsets.size();
        if (hasEntry)
            fuzz::require(header.indexOffsets[i] == (block ? block->offset : 0), "the index leads to them");
        if (!block && !hasEntry) break;
    }
    fuzz::require(static_cast<std::uint64_t>(header.blockSize) == largest, "the largest block");
    for (std::int64_t frame = 0; frame < facts.wholeFrames; ++frame)
        reader.nextFrame(false);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto interruption = static_cast<std::size_t>(input.number(1));
    test::MemoryDisk disk, interrupted, copy;
    interrupted.bytes = disk.bytes = input.rest();
    MovieFacts facts;
    try {
        facts = test::factsOf(disk.bytes);
        test::copyWholeSeconds(disk.bytes, copy);
    } catch (const ZEBFormatError&) {
        return 0;
    }
    std::int64_t seconds = 0;
    try {
        seconds = test::finish(disk);
    } catch (const MovieDamageError&) {
        fuzz::require(facts.damage.has_value(), "there is damage");
    }
    if (seconds == 0) fuzz::require(disk.journal.empty(), "without a second or with damage it is left alone");
    if (seconds > 0) fuzz::require(!facts.damage && seconds == facts.wholeSeconds, "every second stays");
    if (facts.wholeSeconds > 0) checkMovie(copy.bytes, facts.wholeSeconds);
    if (seconds == 0) return 0;
    checkMovie(disk.bytes, seconds);
    fuzz::require(copy.bytes == disk.bytes, "the copy is the same movie");

    // Interrupt after some of the steps and finish again.
    const std::size_t steps = disk.journal.empty() ? 0 : interruption % disk.journal.size();
    for (std::size_t i = 0; i < steps; ++i)
        disk.journal[i].applyTo(interrupted.bytes);
    fuzz::require(test::finish(interrupted) == seconds && interrupted.bytes == disk.bytes,
                  "ends the same again");
    return 0;
}
