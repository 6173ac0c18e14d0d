// Damaged movies, listed by place and kind of damage: which seconds are found and what repairing makes of
// them.

#include "format/ZEBErrors.h"

#include <gmock/gmock.h>

#include <functional>
#include <set>
#include <string>
#include <vector>

#include "format/BigEndian.h"
#include "format/ZEBReader.h"
#include "format/ZEBWriter.h"
#include "format/check/MovieCheck.h"
#include "format/walk/BlockWalker.h"
#include "format/walk/SecondWalker.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using Bytes = std::vector<std::uint8_t>;
using State = BlockWalker::State;

constexpr int fps = 2, seconds = 6;
constexpr std::size_t index = 34, data = index + 4 * seconds;
/// In a block, the size of the sound is at offset 4, the sizes of the frames are at 11 and 16.
constexpr std::size_t blockBytes = 22;

constexpr std::size_t block(int second) {
    return data + static_cast<std::size_t>(second) * blockBytes;
}
constexpr std::size_t entry(int second) {
    return index + 4 * static_cast<std::size_t>(second);
}

/// A finished movie of the listed seconds with an index of six entries. A byte is twice the number of its
/// second, plus 0x40 for each part before.
Bytes movieOf(const std::vector<int>& numbers) {
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk),
                     {"", 16, 8, fps, 32, fps * static_cast<std::int64_t>(numbers.size()), seconds, 1, true});
    for (const int number : numbers) {
        const auto part = [number](std::size_t size, int place) {
            return Bytes(size, static_cast<std::uint8_t>(2 * number + 0x40 * place));
        };
        const Bytes sound = part(3, 0), first = part(1, 1), second = part(2, 2);
        writer.writeSecond(sound, std::vector<std::span<const std::uint8_t>>{first, second});
    }
    writer.finish();
    return disk.bytes;
}

using Change = std::function<void(Bytes&)>;

Change set(std::size_t place, std::size_t value) {
    return [=](Bytes& bytes) {
        bigEndian::store32(std::span(bytes).subspan(place).first<4>(), static_cast<std::uint32_t>(value));
    };
}
Change garbage(std::size_t begin, std::size_t end) {
    return [=](Bytes& bytes) {
        const auto at = [&](std::size_t place) { return bytes.begin() + static_cast<std::ptrdiff_t>(place); };
        std::fill(at(begin), at(end), std::uint8_t{0xFE});
    };
}
Change resize(std::size_t size) {
    return [=](Bytes& bytes) { bytes.resize(size, 0xFE); };
}
void clearIndex(Bytes& bytes) {
    for (int second = 0; second < seconds; ++second)
        set(entry(second), 0)(bytes);
}

/// Blocks that a walker finds from `second` on, one letter each: W (whole and in its place), d (damaged), -
/// (nothing left), t (torn) or ! (unexpected).
std::string walked(const Bytes& bytes, std::int64_t second) {
    MemoryReadableFile file(bytes);
    BlockWalker walker(file, readHeader(file));
    while (walker.next()) {
    }
    walker.seekTo(second);
    std::string text;
    while (const auto found = walker.next()) {
        if (found->second != second++) return text + "!";
        const bool isInPlace = found->offset == block(static_cast<int>(found->second));
        if (found->isWhole()) {
            text += isInPlace && found->size() == blockBytes ? "W" : "!";
        } else if (found->size() == 0) {
            text += "-";
        } else {
            text += found->state == State::torn ? "t" : "d";
        }
    }
    return text;
}

/// Sizes of the parts that a walker finds in incomplete seconds from `second` on. Checks the parts of whole
/// ones.
std::string partsOf(const Bytes& bytes, std::int64_t second) {
    SecondWalker walker(std::make_unique<MemoryReadableFile>(bytes));
    walker.seekTo(second);
    std::string found;
    while (const auto next = walker.next()) {
        EXPECT_EQ(next->number, second++);
        std::vector<SecondWalker::Piece> pieces{next->sound};
        pieces.insert(pieces.end(), next->frames.begin(), next->frames.end());
        std::string sizes;
        std::vector<Bytes> parts(pieces.size());
        for (std::size_t i = 0; i < pieces.size(); ++i) {
            EXPECT_TRUE(walker.read(pieces[i], parts[i]));
            sizes += (i > 0 ? " " : "") + std::to_string(parts[i].size());
        }
        EXPECT_EQ(next->frameCount,
                  next->state == State::torn ? static_cast<int>(pieces.size()) - 1 : walker.header().fps);
        if (next->state == State::whole) {
            const auto mark = static_cast<std::uint8_t>(2 * next->number);
            EXPECT_THAT(parts,
                        testing::ElementsAre(Bytes(3, mark), Bytes(1, mark + 0x40), Bytes(2, mark + 0x80)));
        } else {
            found += (found.empty() ? "" : ", ") + sizes;
        }
    }
    EXPECT_FALSE(walker.next());
    return found;
}

TEST(MovieDamage, FindsAndKeepsAllReachableSeconds) {
    constexpr std::size_t huge = 0xFFFFFFFF, end = block(seconds);
    const auto frame = [](int second) { return block(second) + 11; };
    const auto sound = [](int second) { return block(second) + 4; };
    const struct {
        const char* what;
        std::vector<Change> damage;
        std::string found;
        std::string parts{};  ///< sizes of sound and frames that are left of each other second
    } cases[] = {
        {"nothing", {}, "WWWWWW"},
        {"frame size, too large", {set(frame(2), huge)}, "WWdWWW", "3"},
        {"frame size, 1 more", {set(frame(2), 2)}, "WWdWWW", "3 2"},
        {"frame size, 1 less", {set(frame(2), 0)}, "WWdWWW", "3 0"},
        {"sound size", {set(sound(2), huge)}, "WWdWWW", "14"},
        {"length, too large", {set(block(2), huge)}, "WWdWWW", "3 1 2"},
        {"length 0", {set(block(2), 0)}, "WWdWWW", "3 1 2"},
        {"length of two blocks", {set(block(2), 2 * blockBytes - 4)}, "WWdWWW", "3 1 2"},
        {"first block", {set(frame(0), huge)}, "dWWWWW", "3"},
        {"frame size, index goes astray", {set(frame(2), huge), set(entry(3), block(3) + 1)}, "WWdWWW", "3"},
        {"frame size, index leads back", {set(frame(2), huge), set(entry(3), block(1))}, "WWdWWW", "3"},
        {"frame size, index leads too far", {set(frame(2), huge), set(entry(3), block(5))}, "WWdWWW", "3"},
        {"frame size, no index", {set(frame(2), huge), clearIndex}, "WWdWWW", "3"},
        {"length, no index", {set(block(2), huge), clearIndex}, "WWdWWW", "3 1 2"},
        {"two in a row", {set(frame(2), huge), set(frame(3), huge)}, "WWddWW", "3, 3"},
        {"two in a row, no index", {set(frame(2), huge), set(frame(3), huge), clearIndex}, "WWddWW", "3, 3"},
        {"two apart", {set(frame(1), huge), set(block(4), 7)}, "WdWWdW", "3, 3 1 2"},
        {"three overwritten", {garbage(block(2) + 2, block(4) + 7)}, "WWdddW", "14, 14, 14"},
        {"two overwritten, entries lost",
         {garbage(block(2) + 2, block(3) + 7), set(entry(3), 0)},
         "WWd-WW",
         "36, 0"},
        {"three overwritten, entries astray",
         {garbage(block(2), block(4) + 7), set(entry(3), block(1)), set(entry(4), huge)},
         "WWd--W",
         "58, 0, 0"},
        {"three overwritten, entries lead back",
         {garbage(block(2), block(4) + 7), set(entry(3), block(1)), set(entry(4), block(0))},
         "WWd--W",
         "58, 0, 0"},
        {"entry in a frame", {set(entry(3), block(3) + 12)}, "WWWWWW"},
        {"entry in the header", {set(entry(3), 4)}, "WWWWWW"},
        {"entry behind the file", {set(entry(3), end)}, "WWWWWW"},
        {"entry of another second", {set(entry(3), block(1))}, "WWWWWW"},
        {"entry of a later second", {set(entry(0), block(1))}, "WWWWWW"},
        {"entries exchanged", {set(entry(3), block(4)), set(entry(4), block(3))}, "WWWWWW"},
        {"no index", {clearIndex}, "WWWWWW"},
        {"last frame size", {set(frame(5), huge)}, "WWWWWd", "3"},
        {"last length", {set(block(5), huge)}, "WWWWWt", "3 1 2"},
        {"cut in the last", {resize(end - 1)}, "WWWWWt", "3 1"},
        {"cut in a length", {resize(block(4) + 3)}, "WWWW"},
        {"cut between blocks", {resize(block(4))}, "WWWW"},
        {"cut, and damaged before", {resize(end - 1), set(frame(1), huge)}, "WdWWWt", "3, 3 1"},
        {"bytes behind", {resize(end + 3)}, "WWWWWW"},
        {"more bytes behind", {resize(end + 40)}, "WWWWWWt", "32"},
    };
    const Bytes movie = movieOf({0, 1, 2, 3, 4, 5});
    ASSERT_EQ(movie.size(), end);
    for (const auto& [what, damage, found, parts] : cases) {
        SCOPED_TRACE(what);
        Bytes bytes = movie;
        for (const Change& change : damage)
            change(bytes);
        for (std::size_t second = 0; second <= found.size(); ++second)
            EXPECT_EQ(walked(bytes, static_cast<std::int64_t>(second)), found.substr(second)) << second;
        EXPECT_EQ(partsOf(bytes, 0), parts);

        std::vector<int> whole;
        for (std::size_t second = 0; second < found.size(); ++second)
            if (found[second] == 'W') whole.push_back(static_cast<int>(second));
        const std::size_t first = found.find_first_not_of('W'), last = found.rfind('W');
        const bool isInside = first < last;
        const MovieFacts facts = factsOf(bytes);
        EXPECT_EQ(facts.wholeSeconds, static_cast<std::int64_t>(whole.size()));
        EXPECT_EQ(facts.isFinished, whole.size() == seconds);
        EXPECT_EQ(facts.end, block(static_cast<int>(last) + 1));
        EXPECT_EQ(facts.damage.has_value(), isInside);

        MemoryDisk copy, disk;
        copyWholeSeconds(bytes, copy);
        EXPECT_EQ(copy.bytes, movieOf(whole));
        disk.bytes = bytes;
        if (!isInside) {
            EXPECT_EQ(finish(disk), static_cast<std::int64_t>(whole.size()));
            EXPECT_EQ(disk.bytes, movieOf(whole));
            EXPECT_EQ(disk.journal.empty(), bytes == movie) << "a finished movie is not written to";
            continue;
        }
        const auto damaged = [&](char state) { return std::count(found.begin(), found.end(), state); };
        EXPECT_EQ(facts.damage->seconds, damaged('d') + damaged('-'));
        try {
            finish(disk);
            ADD_FAILURE() << "seconds were cut off";
        } catch (const MovieDamageError& error) {
            EXPECT_EQ(error.second(), static_cast<std::int64_t>(first));
            EXPECT_EQ(error.offset(), block(static_cast<int>(first)));
            EXPECT_EQ(error.secondsBehind(), static_cast<std::int64_t>(whole.size() - first));
        }
        EXPECT_TRUE(disk.journal.empty());
    }
}

TEST(MovieDamage, FindsAllPartsOfTornSecond) {
    const Bytes movie = movieOf({0, 1, 2, 3, 4, 5});
    for (std::size_t size = 0; size < blockBytes; ++size) {
        Bytes cut = movie;
        cut.resize(block(5) + size);
        EXPECT_EQ(partsOf(cut, 4), size < 9    ? ""
                                   : size < 11 ? std::to_string(size - 8)
                                   : size < 16 ? "3"
                                               : "3 1");
    }
    Bytes slower = movie;
    slower[index - golden::index + golden::totalFrames - 3] = 1;  // one frame per second instead of two
    EXPECT_EQ(partsOf(slower, 4), "3 1, 3 1");
    SecondWalker walker(std::make_unique<MemoryReadableFile>(movie));
    Bytes record{1};
    walker.readFrame({block(5), 70'000}, record);
    EXPECT_EQ(record, Bytes()) << "too large for a picture";
    walker.readFrame({block(5) + 20, 2}, record);
    EXPECT_EQ(record, Bytes(2, 0x8A));
}

/// The index spans several read pieces, the last of them empty. The blocks have the smallest possible size.
TEST(MovieDamage, FinishesAndCopiesLongMoviesInPieces) {
    constexpr int count = 16385, room = 40000;
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), {"", 16, 8, 1, 32, count, room, 0, false});
    for (int second = 0; second < count; ++second)
        writer.writeSecond({}, std::vector<std::span<const std::uint8_t>>(1));
    MemoryDisk torn, copy;
    torn.bytes = disk.bytes;
    torn.bytes.insert(torn.bytes.end(), {0, 0, 0});
    copyWholeSeconds(torn.bytes, copy);
    EXPECT_EQ(finish(torn), count);
    writer.finish();
    EXPECT_TRUE(torn.bytes == disk.bytes);
    EXPECT_TRUE(copy.bytes == disk.bytes);
    EXPECT_TRUE(factsOf(disk.bytes).isFinished);
    EXPECT_EQ(factsOf(disk.bytes).bytesPerSecond, 12);
    copy.bytes.clear();
    copyWholeSeconds(movieOf({}), copy);
    EXPECT_EQ(copy.bytes, movieOf({}));
    const MovieFacts empty = factsOf(movieOf({}));
    EXPECT_TRUE(empty.isFinished);
    EXPECT_EQ(empty.bytesPerSecond, 0);
}

TEST(MovieDamage, DistinguishesFinishedAndUnfinishedMovies) {
    const Bytes finished = golden::movie();
    const MovieFacts facts = factsOf(finished);
    EXPECT_TRUE(facts.isFinished && facts.wasFinished && facts.isLooping());
    EXPECT_EQ(facts.fileSize, finished.size());
    EXPECT_EQ(facts.indexEntries, 2U);
    EXPECT_EQ(facts.largestBlock, 25U);
    EXPECT_EQ(facts.bytesPerSecond, 23);
    const auto isComplete = [](const Bytes& bytes) {
        MemoryReadableFile file(bytes);
        return PartialFile(file).isComplete();
    };
    EXPECT_TRUE(isComplete(finished));
    for (const std::size_t place : {golden::totalFrames + 3, golden::maxSecondBlockSize + 3,
                                    golden::index + 3, golden::firstBlock - 1}) {
        Bytes bytes = finished;
        bytes[place] ^= 2;
        EXPECT_FALSE(isComplete(bytes)) << place;
        EXPECT_EQ(factsOf(bytes).isFinished, place != golden::totalFrames + 3) << place;
    }
    Bytes longer = finished;
    longer.push_back(0);
    EXPECT_FALSE(isComplete(longer));
    EXPECT_TRUE(factsOf(longer).isFinished);
    for (const auto& [frames, largest, wasFinished] :
         {std::tuple{4, 0, false}, {0, 0, true}, {3, 9, false}, {6, 9, true}}) {
        Bytes bytes = finished;
        set(golden::totalFrames, frames)(bytes);
        set(golden::maxSecondBlockSize, largest)(bytes);
        EXPECT_EQ(factsOf(bytes).wasFinished, wasFinished) << frames;
        EXPECT_FALSE(factsOf(bytes).isFinished) << frames;
    }
    for (const std::string text : {"ZEB", "ZEB1", "ZEB2", "xZEB1"}) {
        const Bytes bytes(text.begin(), text.end());
        MemoryReadableFile file(bytes);
        EXPECT_EQ(isMovie(file), text == "ZEB1");
    }
}

/// A file that is cut while it is read: at each access, the functions end or report the end of the file.
TEST(MovieDamage, ShrinkingFileEndsReading) {
    const Bytes movie = movieOf({0, 1, 2, 3, 4, 5});
    std::set<std::string> errors;
    for (int access = 1; access < 100; ++access) {
        Bytes bytes = movie;
        int left = access;
        const auto open = [&] {
            return std::make_unique<MemoryReadableFile>(bytes, [&] {
                if (--left == 0) bytes.resize(20);
            });
        };
        EXPECT_EQ(failure([&] { readHeader(*open()); }), access > 4 ? "" : "ZEB 999 Unerwartetes EOF");
        bytes = movie;
        left = access;
        errors.insert(failure([&] {
            const auto fault = checkMovie(open, {}).fault;
            EXPECT_TRUE(fault || left > 0) << access;
        }));
        bytes = movie;
        left = access;
        const auto file = open();
        MemoryDisk copy;
        MemoryWritableFile target(copy);
        errors.insert(failure([&] { PartialFile(*file).copyWholeSeconds(target); }));
        EXPECT_LE(copy.bytes.size(), movie.size());
    }
    EXPECT_THAT(errors, testing::ElementsAre("", "ZEB 999 Unerwartetes EOF"));
}

/// A file of several GiB that contains only zeros after its first bytes. Records the size of the largest
/// read.
class Hole final : public ReadableFile {
public:
    Hole(Bytes start, std::uint64_t size, std::size_t& largestRead)
        : m_start(std::move(start)), m_size(size), m_largestRead(largestRead) {}

    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override {
        m_largestRead = std::max(m_largestRead, buffer.size());
        const std::size_t count = std::min<std::uint64_t>(buffer.size(), m_size - std::min(m_size, offset));
        for (std::size_t i = 0; i < count; ++i)
            buffer[i] = offset + i < m_start.size() ? m_start[offset + i] : 0;
        return count;
    }
    std::uint64_t size() override { return m_size; }

private:
    Bytes m_start;
    std::uint64_t m_size;
    std::size_t& m_largestRead;
};

TEST(MovieDamage, LimitsBlocksToFourGibibytes) {
    constexpr std::uint64_t most = 0xFFFFFFFF;
    for (const auto& [length, found] :
         {std::pair{most - 4 - data, "Wt"},  // no block can start after the largest offset
          {most - 3 - data, "W"},
          {most - 4, "W"},
          {most - 3, "d"}}) {  // larger than its length field can state
        Bytes start = movieOf({0});
        set(block(0), length)(start);
        set(block(0) + 4, length - 4 - 4 * fps)(start);
        start.resize(block(0) + 8);
        std::size_t largestRead = 0;
        Hole file(start, 2 * most, largestRead);
        BlockWalker walker(file, readHeader(file));
        std::string states;
        while (const auto next = walker.next())
            states += next->isWhole() ? 'W' : next->state == State::torn ? 't' : 'd';
        EXPECT_EQ(states, found) << length;
    }
}

TEST(MovieDamage, HugeSizeFieldsCauseNoLargeReads) {
    constexpr std::uint64_t size = std::uint64_t{1} << 32;
    constexpr std::size_t most = 1 << 20;
    Bytes largeHeader = movieOf({0});
    set(4, 0xFFFFFF00)(largeHeader);
    Bytes largeRecord = movieOf({0});
    set(block(0), size - block(0) - 4)(largeRecord);
    set(block(0) + 11, size - block(0) - 19)(largeRecord);
    for (const Bytes& start : {largeHeader, largeRecord}) {
        std::size_t largestRead = 0;
        const auto open = [&] { return std::make_unique<Hole>(start, size, largestRead); };
        ZEBReader reader(open);
        EXPECT_LE(reader.readHeader().indexOffsets.size(), ZEBReader::mostEntriesKept);
        failure([&] { EXPECT_FALSE(reader.nextFrame(false)); });
        reader.readAllAudio();
        EXPECT_TRUE(checkMovie(open, {}).fault.has_value());
        EXPECT_FALSE(PartialFile(*open()).isComplete());
        EXPECT_LT(largestRead, most);
    }
}

}  // namespace
}  // namespace zeb
