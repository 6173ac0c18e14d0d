#include "format/walk/SecondWalker.h"

#include <gmock/gmock.h>

#include "format/BigEndian.h"
#include "format/Layout.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

constexpr std::size_t seconds = 6, fps = 2;
constexpr std::size_t index = golden::index, data = index + 4 * seconds;

/// Seconds of different sizes. One frame of the first second is empty.
const std::vector<golden::Second>& allSeconds() {
    static const std::vector<golden::Second> all = [] {
        std::vector<golden::Second> result;
        for (std::size_t s = 0; s < seconds; ++s) {
            const auto fill = [s](std::size_t count, std::size_t part) {
                return Bytes(count, static_cast<std::uint8_t>(0x10 * (s + 1) + part));
            };
            result.push_back({fill(s % 3 + 3, 0), {fill(7 - s, 1), fill(2 * s, 2)}});
        }
        return result;
    }();
    return all;
}

/// A movie of these seconds. Its index has room for all seconds.
Bytes movieOf(const std::vector<golden::Second>& parts, bool isFinished = true) {
    MemoryDisk disk;
    MovieParameters parameters = golden::parameters();
    parameters.frameIndexCount = seconds;
    parameters.totalFrames = static_cast<std::int64_t>((isFinished ? parts.size() : seconds) * fps);
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), parameters);
    for (const golden::Second& second : parts) {
        const std::vector<std::span<const std::uint8_t>> frames(second.frames.begin(), second.frames.end());
        writer.writeSecond(second.sound, frames);
    }
    if (isFinished) writer.finish();
    return disk.bytes;
}

std::size_t blockAt(std::size_t second) {
    std::size_t place = data;
    for (std::size_t s = 0; s < second; ++s) {
        place += 4 + 4 + allSeconds()[s].sound.size();
        for (const Bytes& frame : allSeconds()[s].frames)
            place += 4 + frame.size();
    }
    return place;
}
std::size_t frameAt(std::size_t second, std::size_t frame) {
    std::size_t place = blockAt(second) + 8 + allSeconds()[second].sound.size();
    for (std::size_t f = 0; f < frame; ++f)
        place += 4 + allSeconds()[second].frames[f].size();
    return place;
}

void store(Bytes& bytes, std::size_t place, std::size_t value) {
    bigEndian::store32(std::span(bytes).subspan(place).first<4>(), static_cast<std::uint32_t>(value));
}

/// Seconds that the walker finds, as "NUMBER SOUND FRAMES..." or "NUMBER torn ...", with the sizes of the
/// parts that were read.
std::vector<std::string> walk(const Bytes& bytes, std::int64_t from = 0) {
    SecondWalker walker(std::make_unique<MemoryReadableFile>(bytes));
    walker.seekTo(from);
    std::vector<std::string> found;
    while (const auto second = walker.next()) {
        const bool isTorn = second->state == BlockWalker::State::torn;
        std::string text = std::to_string(second->number) + (isTorn ? " torn" : "");
        Bytes part;
        EXPECT_TRUE(walker.read(second->sound, part));
        text += " " + std::to_string(part.size());
        EXPECT_TRUE(part.empty() || part.front() == 0x10 * (second->number + 1));
        for (const SecondWalker::Piece& frame : second->frames) {
            EXPECT_TRUE(walker.read(frame, part));
            text += " " + std::to_string(part.size());
            EXPECT_TRUE(part.empty() ||
                        part.back() == 0x10 * (second->number + 1) + (&frame - second->frames.data()) + 1);
        }
        EXPECT_EQ(second->frameCount, isTorn ? static_cast<int>(second->frames.size()) : int{fps});
        found.push_back(text);
    }
    EXPECT_FALSE(walker.next());
    return found;
}

const std::vector<std::string> wholeWalk = {"0 3 7 0", "1 4 6 2", "2 5 5 4",
                                            "3 3 4 6", "4 4 3 8", "5 5 2 10"};

std::vector<std::string> changed(std::size_t second, const std::string& text) {
    std::vector<std::string> result = wholeWalk;
    result[second] = text;
    return result;
}
std::vector<std::string> endingWith(std::size_t second, const std::string& text) {
    std::vector<std::string> result(wholeWalk.begin(),
                                    wholeWalk.begin() + static_cast<std::ptrdiff_t>(second));
    if (!text.empty()) result.push_back(text);
    return result;
}

TEST(SecondWalker, StartsAtAnySecondDespiteWrongIndex) {
    for (const char* indexIs : {"right", "empty", "shifted", "misleading"}) {
        Bytes bytes = movieOf(allSeconds());
        for (std::size_t s = 0; s < seconds; ++s) {
            if (indexIs == std::string("empty")) store(bytes, index + 4 * s, 0);
            if (indexIs == std::string("shifted")) store(bytes, index + 4 * s, blockAt((s + 1) % seconds));
            if (indexIs == std::string("misleading")) store(bytes, index + 4 * s, blockAt(s) + 4);
        }
        for (std::size_t from = 0; from <= seconds + 1; ++from) {
            const auto begin = wholeWalk.begin() + static_cast<std::ptrdiff_t>(std::min(from, seconds));
            EXPECT_EQ(walk(bytes, static_cast<std::int64_t>(from)),
                      std::vector<std::string>(begin, wholeWalk.end()))
                << indexIs << " " << from;
        }
    }
}

TEST(SecondWalker, FindsAllPartsOfCutMovie) {
    const Bytes whole = movieOf(allSeconds(), false);
    for (std::size_t size = blockAt(5); size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const std::size_t within = size - blockAt(5);  // 4, 4 + 5, 4 + 2, 4 + 10 bytes
        const std::string sound = std::to_string(std::min<std::size_t>(within < 8 ? 0 : within - 8, 5));
        EXPECT_EQ(walk(cut), within < 9    ? endingWith(5, "")
                             : within < 19 ? endingWith(5, "5 torn " + sound)
                             : within < 33 ? endingWith(5, "5 torn 5 2")
                                           : wholeWalk)
            << within;
        const MovieFacts facts = factsOf(cut);
        EXPECT_EQ(facts.wholeSeconds, within < 33 ? 5 : 6);
        EXPECT_EQ(facts.end, within < 33 ? blockAt(5) : whole.size());
        EXPECT_FALSE(facts.damage);
        EXPECT_FALSE(facts.isFinished);
    }
}

TEST(SecondWalker, ContinuesAfterDamagedSeconds) {
    const struct {
        const char* name;
        bool hasIndex;
        std::vector<std::pair<std::size_t, std::size_t>> changes;  ///< offset and new value of a size field
        std::vector<std::string> found;
        std::vector<std::size_t> kept;  ///< complete seconds
    } cases[] = {
        {"a length too large", true, {{blockAt(2), 0xFFFFFFF0}}, wholeWalk, {0, 1, 3, 4, 5}},
        {"a length too large, no index", false, {{blockAt(2), 0xFFFFFFF0}}, wholeWalk, {0, 1, 3, 4, 5}},
        {"a length one less", true, {{blockAt(2), blockAt(3) - blockAt(2) - 5}}, wholeWalk, {0, 1, 3, 4, 5}},
        {"a length of nothing", true, {{blockAt(2), 3}}, wholeWalk, {0, 1, 3, 4, 5}},
        {"a sound too large", false, {{blockAt(1) + 4, 99}}, changed(1, "1 20"), {0, 2, 3, 4, 5}},
        {"a first frame too large", false, {{frameAt(3, 0), 99}}, changed(3, "3 3"), {0, 1, 2, 4, 5}},
        {"a first frame too small", false, {{frameAt(4, 0), 2}}, changed(4, "4 4 2"), {0, 1, 2, 3, 5}},
        {"a last frame too large", true, {{frameAt(3, 1), 7}}, changed(3, "3 3 4"), {0, 1, 2, 4, 5}},
        {"a last frame too small", true, {{frameAt(0, 0), 6}}, changed(0, "0 3 6"), {1, 2, 3, 4, 5}},
        {"the last second", true, {{frameAt(5, 1), 11}}, changed(5, "5 5 2"), {0, 1, 2, 3, 4}},
        {"two in a row",
         true,
         {{frameAt(2, 1), 99}, {frameAt(3, 0), 99}},
         {"0 3 7 0", "1 4 6 2", "2 5 5", "3 3", "4 4 3 8", "5 5 2 10"},
         {0, 1, 4, 5}},
        {"two lengths in a row",
         true,
         {{blockAt(2), 0xFFFFFFF0}, {blockAt(3), 0xFFFFFFF0}},
         wholeWalk,
         {0, 1, 4, 5}},
        {"a wrong entry, and damage before it",
         true,
         {{index + 12, blockAt(4)}, {frameAt(2, 0), 99}},
         changed(2, "2 5"),
         {0, 1, 3, 4, 5}},
        {"an entry into the header, and damage",
         true,
         {{index + 12, 4}, {frameAt(2, 0), 99}},
         changed(2, "2 5"),
         {0, 1, 3, 4, 5}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Bytes bytes = movieOf(allSeconds());
        if (!c.hasIndex) std::fill(bytes.begin() + index, bytes.begin() + data, std::uint8_t{0});
        for (const auto& [place, value] : c.changes)
            store(bytes, place, value);
        EXPECT_EQ(walk(bytes), c.found);
        EXPECT_EQ(walk(bytes, 4), c.found.size() < 5
                                      ? std::vector<std::string>()
                                      : std::vector<std::string>(c.found.begin() + 4, c.found.end()));

        std::uint64_t largest = 0, total = 0;
        for (const std::size_t second : c.kept) {
            const std::uint64_t size = blockAt(second + 1 < seconds ? second + 1 : 0) - blockAt(second);
            const std::uint64_t block =
                second + 1 < seconds ? size : movieOf(allSeconds()).size() - blockAt(second);
            largest = std::max(largest, block);
            total += block;
        }
        const MovieFacts facts = factsOf(bytes);
        EXPECT_EQ(facts.largestBlock, largest);
        EXPECT_DOUBLE_EQ(facts.bytesPerSecond,
                         static_cast<double>(total) / static_cast<double>(c.kept.size()));
        EXPECT_TRUE(facts.wasFinished);
        EXPECT_EQ(facts.indexEntries, seconds);
        MemoryReadableFile source(bytes);
        EXPECT_FALSE(PartialFile(source).isComplete());
    }
}

TEST(SecondWalker, SkipsRecordsTooLargeForPictures) {
    std::vector<golden::Second> parts = allSeconds();
    parts[1].frames[1].assign(100'000, 0x5A);  // too large for 16 x 8 pixels
    const Bytes bytes = movieOf(parts);
    SecondWalker walker(std::make_unique<MemoryReadableFile>(bytes));
    while (const auto second = walker.next()) {
        for (std::size_t frame = 0; frame < fps; ++frame) {
            const auto number = static_cast<std::size_t>(second->number);
            Bytes record{1};
            walker.readFrame(second->frames[frame], record);
            EXPECT_EQ(record, number == 1 && frame == 1 ? Bytes() : parts[number].frames[frame]);
        }
    }
}

TEST(SecondWalker, LimitsFramesPerSecondByHeader) {
    Bytes bytes = movieOf(allSeconds());
    bytes[golden::totalFrames - 3] = 1;  // one frame per second instead of two
    SecondWalker walker(std::make_unique<MemoryReadableFile>(bytes));
    for (std::size_t second = 0; second < seconds; ++second) {
        const auto found = walker.next();
        ASSERT_TRUE(found);
        EXPECT_EQ(found->frames.size(), 1U);
        EXPECT_EQ(found->state, BlockWalker::State::damaged);
    }
    EXPECT_FALSE(walker.next());
}

TEST(MovieFacts, DistinguishFinishedAndUnfinishedMovies) {
    const Bytes finished = movieOf(allSeconds());
    const MovieFacts facts = factsOf(finished);
    EXPECT_TRUE(facts.isFinished && facts.wasFinished && facts.isLooping());
    EXPECT_EQ(facts.fileSize, finished.size());
    MemoryReadableFile file(finished);
    EXPECT_TRUE(isMovie(file) && PartialFile(file).isComplete());
    for (const std::size_t place :
         {golden::totalFrames + 3, golden::maxSecondBlockSize + 3, index + 3, data - 1}) {
        Bytes bytes = finished;
        bytes[place] ^= 2;
        MemoryReadableFile other(bytes);
        EXPECT_FALSE(PartialFile(other).isComplete()) << place;
        EXPECT_EQ(factsOf(bytes).isFinished, place != golden::totalFrames + 3) << place;
    }
    Bytes longer = finished;
    longer.push_back(0);
    MemoryReadableFile other(longer);
    EXPECT_FALSE(PartialFile(other).isComplete());
    EXPECT_TRUE(factsOf(longer).isFinished);
    for (const auto& [frames, largest, wasFinished] :
         {std::tuple{12, 0, false}, {0, 0, true}, {11, 9, false}, {14, 9, true}}) {
        Bytes bytes = finished;
        store(bytes, golden::totalFrames, static_cast<std::size_t>(frames));
        store(bytes, golden::maxSecondBlockSize, static_cast<std::size_t>(largest));
        EXPECT_EQ(factsOf(bytes).wasFinished, wasFinished) << frames;
        EXPECT_FALSE(factsOf(bytes).isFinished) << frames;
    }
    for (const Bytes& bytes :
         {Bytes{'Z', 'E', 'B'}, Bytes{'Z', 'E', 'B', '2'}, Bytes{'x', 'Z', 'E', 'B', '1'}}) {
        MemoryReadableFile none(bytes);
        EXPECT_FALSE(isMovie(none));
    }
}

}  // namespace
}  // namespace zeb
