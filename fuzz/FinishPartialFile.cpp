// A file of any bytes made a finished movie: it then holds as many whole seconds as was said.

#include "format/BigEndian.h"
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

std::int64_t finish(test::MemoryDisk& disk) {
    test::MemoryReadableFile source(disk.bytes);
    test::MemoryWritableFile target(disk);
    return finishPartialFile(source, target);
}

void checkMovie(const fuzz::Bytes& bytes, std::int64_t seconds) {
    test::MemoryReadableFile file(bytes);
    const MovieFacts facts = readMovieFacts(file);
    fuzz::require(facts.isFinished && facts.wholeSeconds == seconds, "finished, with the seconds promised");
    fuzz::require(facts.header.frameCount == facts.wholeFrames, "counts its frames");

    ZEBReader reader([&] { return std::make_unique<test::MemoryReadableFile>(bytes); });
    const ZEBHeader header = reader.readHeader();
    BlockWalker walker(file, readHeader(file));
    std::uint64_t largest = 0;
    for (std::size_t i = 0; i < std::max(header.indexOffsets.size(), static_cast<std::size_t>(seconds));
         ++i) {
        const auto block = walker.next();
        fuzz::require(block.has_value() == (static_cast<std::int64_t>(i) < seconds), "that many blocks");
        if (block) largest = std::max<std::uint64_t>(largest, block->size);
        if (i < header.indexOffsets.size())
            fuzz::require(header.indexOffsets[i] == (block ? block->offset : 0), "the index leads to them");
    }
    fuzz::require(walker.position() == bytes.size(), "nothing lies behind the last");
    fuzz::require(static_cast<std::uint64_t>(header.blockSize) == largest, "the largest block");

    reader.readAllAudio();
    for (std::int64_t frame = 0; frame < facts.wholeFrames; ++frame)
        reader.nextFrame(false);
    reader.seekToFrame(facts.wholeFrames - 1);
    reader.nextFrame(false);
    try {
        reader.nextFrame(false);
        fuzz::require(false, "the end is announced");
    } catch (const ZEBFormatError& error) {
        fuzz::require(std::string(error.what()) == "EOF", "the end is no damage");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto interruption = static_cast<std::size_t>(input.number(1));
    test::MemoryDisk disk;
    disk.bytes = input.rest();
    const fuzz::Bytes before = disk.bytes;
    std::int64_t seconds = 0;
    try {
        seconds = finish(disk);
    } catch (const ZEBFormatError&) {
        fuzz::require(disk.journal.empty(), "what is no movie is left alone");
        return 0;
    }
    if (seconds == 0) {
        fuzz::require(disk.journal.empty(), "without a second nothing is changed");
        return 0;
    }
    checkMovie(disk.bytes, seconds);

    // Interrupted after some of the steps and started again.
    test::MemoryDisk interrupted;
    interrupted.bytes = before;
    for (std::size_t i = 0; i < interruption % disk.journal.size(); ++i)
        disk.journal[i].applyTo(interrupted.bytes);
    fuzz::require(finish(interrupted) == seconds && interrupted.bytes == disk.bytes, "ends the same again");
    return 0;
}
