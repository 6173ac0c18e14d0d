#include "format/check/PartialFile.h"

#include <gmock/gmock.h>

#include "format/BigEndian.h"
#include "format/ZEBErrors.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

std::uint32_t wordAt(const Bytes& bytes, std::size_t place) {
    return bigEndian::load32(std::span(bytes).subspan(place).first<4>());
}

TEST(PartialFileTest, FinishesMovieCutAtAnyByte) {
    for (const Bytes& movie : {golden::unfinishedMovie(), golden::movie()}) {
        for (std::size_t cut = 0; cut <= movie.size(); ++cut) {
            SCOPED_TRACE(cut);
            MemoryDisk disk;
            disk.bytes.assign(movie.begin(), movie.begin() + static_cast<std::ptrdiff_t>(cut));
            const Bytes before = disk.bytes;
            if (cut < golden::firstBlock) {
                EXPECT_THROW(factsOf(before), ZEBFormatError);
                EXPECT_THROW(finish(disk), ZEBFormatError);
            } else {
                const int seconds = cut < golden::secondBlock ? 0 : cut < movie.size() ? 1 : 2;
                EXPECT_EQ(factsOf(before).wholeSeconds, seconds);
                EXPECT_EQ(factsOf(before).isFinished, before == golden::movie());
                EXPECT_EQ(finish(disk), seconds);
            }
            EXPECT_EQ(disk.bytes, cut < golden::secondBlock ? before
                                  : cut < movie.size()      ? golden::firstSecondAlone()
                                                            : golden::movie());
        }
    }
}

TEST(PartialFileTest, LimitsIndexAndCountByFileSize) {
    // The last index entry points to a header field that looks like a block reaching to the end of the file.
    Bytes misled = golden::movie();
    misled.pop_back();
    misled[golden::maxSecondBlockSize + 3] =
        static_cast<std::uint8_t>(misled.size() - golden::maxSecondBlockSize - 4);
    misled[golden::index + 7] = golden::maxSecondBlockSize;
    EXPECT_FALSE(factsOf(misled).isFinished);
    EXPECT_EQ(factsOf(misled).wholeSeconds, 1);
    EXPECT_EQ(factsOf(misled).bytesPerSecond, 21);
    Bytes boasting = golden::movie();
    std::fill_n(boasting.begin() + golden::totalFrames, 4, std::uint8_t{0xFF});
    EXPECT_FALSE(factsOf(boasting).isFinished);
    EXPECT_EQ(factsOf(boasting).wholeSeconds, 2);
    // Three bytes after the last of two entries are no room for a third one. The long title makes all its
    // bytes count.
    MemoryDisk odd;
    MovieParameters parameters = golden::parameters();
    parameters.title = std::string(300, 'x');
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(odd), parameters);
    const std::size_t data = odd.bytes.size();
    const std::vector<std::span<const std::uint8_t>> frames(2);
    for (int second = 0; second < 3; ++second)
        writer.writeSecond({}, frames);
    odd.bytes[7] += 3;
    odd.bytes.insert(odd.bytes.begin() + static_cast<std::ptrdiff_t>(data), 3, 0);
    EXPECT_EQ(finish(odd), 3);
    EXPECT_EQ(wordAt(odd.bytes, data - 4), data + 3 + 16);
    EXPECT_EQ(wordAt(odd.bytes, data - 1) & 0xFFFFFFU, 0U);
}

/// A power loss may keep any subset of the calls since the last flush. The movie must still play: its header
/// is intact, its two seconds are complete, and each index entry is zero or correct.
TEST(PartialFileTest, PowerLossLeavesPlayableMovie) {
    MemoryDisk disk;
    const Bytes movie = golden::unfinishedMovie();
    disk.bytes = movie;
    disk.bytes.insert(disk.bytes.end(), {0, 0, 0, 99, 0, 0});
    Bytes flushed = disk.bytes;
    ASSERT_EQ(finish(disk), 2);
    ASSERT_EQ(disk.bytes, golden::movie());

    std::vector<MemoryDisk::Call> pending;
    int states = 0;
    for (const auto& call : disk.journal) {
        if (call.kind != MemoryDisk::Call::Kind::synchronise) {
            pending.push_back(call);
            continue;
        }
        for (unsigned subset = 0; subset < 1u << pending.size(); ++subset) {
            Bytes state = flushed;
            for (std::size_t index = 0; index < pending.size(); ++index)
                if (subset >> index & 1) pending[index].applyTo(state);
            ++states;
            const MovieFacts facts = factsOf(state);
            EXPECT_EQ(facts.wholeSeconds, 2);
            EXPECT_EQ(facts.header.frameCount, 4);
            EXPECT_THAT(wordAt(state, golden::index), testing::AnyOf(0u, golden::firstBlock));
            EXPECT_THAT(wordAt(state, golden::index + 4), testing::AnyOf(0u, golden::secondBlock));
            // The header says "finished" only if the movie is finished.
            if (facts.header.blockSize != 0) {
                EXPECT_EQ(state, golden::movie());
            }
        }
        for (const auto& done : pending)
            done.applyTo(flushed);
        pending.clear();
    }
    EXPECT_TRUE(pending.empty());
    EXPECT_EQ(states, 2 + 4 + 2);
}

TEST(PartialFileTest, ReportsFailuresAndKeepsPlayableSeconds) {
    MemoryDisk healthy;
    healthy.bytes = golden::unfinishedMovie();
    finish(healthy);
    for (int call = 1; call <= healthy.calls; ++call) {
        MemoryDisk disk;
        disk.bytes = golden::unfinishedMovie();
        disk.failFrom = disk.failTo = call;
        EXPECT_THROW(finish(disk), FileError) << call;
        EXPECT_EQ(factsOf(disk.bytes).wholeSeconds, 2) << call;
        disk.failFrom = disk.failTo = 0;
        EXPECT_EQ(finish(disk), 2) << call;
        EXPECT_EQ(disk.bytes, golden::movie()) << call;
    }
}

TEST(PartialFileTest, FinishesFileByPath) {
    const TemporaryFolder folder;
    const std::string path = folder.file("movie.zeb");
    for (const auto& [bytes, result] : {std::pair{golden::unfinishedMovie(), golden::movie()},
                                        {golden::movie(), golden::movie()},
                                        {Bytes(), Bytes()}}) {
        store(path, bytes);
        if (bytes.empty()) {
            EXPECT_THROW(finishPartialFile(path), ZEBFormatError);
        } else {
            EXPECT_EQ(finishPartialFile(path), 2);
        }
        EXPECT_EQ(contents<Bytes>(path), result);
    }
}

}  // namespace
}  // namespace zeb
