// A file of any bytes made a finished movie: it then holds as many whole seconds as was said.

#include "format/BlockWalker.h"
#include "format/MovieFacts.h"
#include "format/PartialFile.h"
#include "format/ZEBFormatError.h"
#include "format/ZEBReader.h"
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
    for (std::size_t i = 0; i < header.indexOffsets.size() || walker.position() < bytes.size(); ++i) {
        const auto block = walker.next();
        fuzz::require(block.has_value() == (static_cast<std::int64_t>(i) < seconds), "that many blocks");
        if (block) largest = std::max<std::uint64_t>(largest, block->size);
        if (i < header.indexOffsets.size())
            fuzz::require(header.indexOffsets[i] == (block ? block->offset : 0), "the index leads to them");
    }
    fuzz::require(static_cast<std::uint64_t>(header.blockSize) == largest, "the largest block");
    for (std::int64_t frame = 0; frame < facts.wholeFrames; ++frame)
        reader.nextFrame(false);
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto interruption = static_cast<std::size_t>(input.number(1));
    test::MemoryDisk disk, interrupted;
    interrupted.bytes = disk.bytes = input.rest();
    std::int64_t seconds = 0;
    try {
        seconds = test::finish(disk);
    } catch (const ZEBFormatError&) {
    }
    if (seconds == 0) {
        fuzz::require(disk.journal.empty(), "what is no movie, or has no second, is left alone");
        return 0;
    }
    checkMovie(disk.bytes, seconds);

    // Interrupted after some of the steps and started again.
    for (std::size_t i = 0; i < interruption % disk.journal.size(); ++i)
        disk.journal[i].applyTo(interrupted.bytes);
    fuzz::require(test::finish(interrupted) == seconds && interrupted.bytes == disk.bytes,
                  "ends the same again");
    return 0;
}
