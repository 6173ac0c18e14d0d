#include "format/ZEBWriter.h"

#include <gmock/gmock.h>
#include <sys/mman.h>

#include <filesystem>
#include <fstream>
#include <limits>

#include "format/BlockWalker.h"
#include "format/MovieFacts.h"
#include "format/PartialFile.h"
#include "format/ZEBConverterError.h"
#include "format/ZEBWriterError.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"
#include "tests/platform/FileSizeLimit.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;
using golden::Second;

void write(ZEBWriter& writer, const Second& second) {
    const std::vector<std::span<const std::uint8_t>> frames(second.frames.begin(), second.frames.end());
    writer.writeSecond(second.sound, frames);
}

Bytes contents(const std::string& path) {
    const auto file = openForReading(path);
    Bytes bytes(file->size());
    EXPECT_EQ(file->readAt(0, bytes), bytes.size());
    return bytes;
}

MovieFacts factsOf(const Bytes& bytes) {
    MemoryReadableFile file(bytes);
    return readMovieFacts(file);
}

/// The end of the whole blocks.
std::uint64_t endOfBlocks(const Bytes& bytes) {
    MemoryReadableFile file(bytes);
    BlockWalker walker(file, readHeader(file));
    while (walker.next())
        continue;
    return walker.position();
}

TEST(ZEBWriterTest, WritesTheGoldenMovieOverAnExistingFile) {
    const TemporaryFolder folder;
    const std::string path = folder.file("movie.zeb");
    std::ofstream(path) << "something older and longer than nothing";
    ZEBWriter writer(path, golden::parameters());
    for (const Second& second : golden::seconds())
        write(writer, second);
    EXPECT_EQ(contents(path), golden::unfinishedMovie());
    EXPECT_EQ(writer.bytesWritten(), golden::movie().size());
    writer.finish();
    writer.close();
    EXPECT_EQ(contents(path), golden::movie());
}

TEST(ZEBWriterTest, WritesHeaderAndBlocksInOneCallEach) {
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
    EXPECT_EQ(disk.journal.size(), 1u);
    write(writer, golden::seconds()[0]);
    EXPECT_EQ(disk.journal.size(), 2u);
}

TEST(ZEBWriterTest, StoresTitles) {
    std::string longTitle(70000, 'x');
    longTitle[65534] = 'y';
    const struct {
        std::string title;
        Bytes expected;  ///< length, title, pad
    } cases[] = {
        {"", {0, 0}},
        {"ab", {0, 2, 'a', 'b'}},
        {"Caf\u00E9", {0, 4, 'C', 'a', 'f', 0xE9}},
        {"\u0080\u00FF", {0, 2, 0x80, 0xFF}},
        {"\u0100", {0, 2, 0xC4, 0x80}},
        {"5 \u20AC", {0, 5, '5', ' ', 0xE2, 0x82, 0xAC, 0}},
        {"\U0001F3AC", {0, 4, 0xF0, 0x9F, 0x8E, 0xAC}},
        {"cut \xC3", {0, 0}},         // not UTF-8: the end of a character is missing,
        {"\xC0\xAF", {0, 0}},         // longer than need be,
        {"\xED\xA0\x80", {0, 0}},     // half a surrogate pair,
        {"\xF4\x90\x80\x80", {0, 0}}  // beyond the last character
    };
    for (const auto& [title, expected] : cases) {
        MemoryDisk disk;
        MovieParameters movie = golden::parameters();
        movie.title = title;
        movie.frameIndexCount = 0;
        const ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
        ASSERT_EQ(disk.bytes.size(), 8 + expected.size() + 24) << title;
        EXPECT_EQ(disk.bytes[7], expected.size() + 24) << title;
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), disk.bytes.begin() + 8)) << title;
    }

    MemoryDisk disk;
    MovieParameters movie = golden::parameters();
    movie.title = longTitle;
    const ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
    EXPECT_EQ(disk.bytes[8] << 8 | disk.bytes[9], 65535);
    EXPECT_EQ(disk.bytes[10 + 65534], 'y');
    EXPECT_EQ(disk.bytes[10 + 65535], 0);
}

TEST(ZEBWriterTest, RefusesWhatDoesNotFitInOrder) {
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    const struct {
        const char* label;
        std::uint64_t value;
        void (*change)(MovieParameters&);
    } cases[] = {
        {"width", 0, [](MovieParameters& m) { m.width = -1, m.height = -1; }},
        {"width", 65536, [](MovieParameters& m) { m.width = 65536, m.totalFrames = -1; }},
        {"height", 65536, [](MovieParameters& m) { m.height = 65536, m.fps = -1; }},
        {"fps", 65536, [](MovieParameters& m) { m.fps = 65536, m.qlMode = -1; }},
        {"qlMode", 70000, [](MovieParameters& m) { m.qlMode = 70000, m.totalFrames = -1; }},
        {"totalFrames", 0, [](MovieParameters& m) { m.totalFrames = -5, m.frameIndexCount = huge; }},
        {"totalFrames", 4294967296, [](MovieParameters& m) { m.totalFrames = 4294967296; }},
        // 30 bytes with the title, then 4 for each entry.
        {"header size", 30 + 4 * 1073741817ull, [](MovieParameters& m) { m.frameIndexCount = 1073741817; }},
        {"header size", ~0ull, [](MovieParameters& m) { m.frameIndexCount = huge; }},
    };
    for (const auto& [label, value, change] : cases) {
        MemoryDisk disk;
        MovieParameters movie = golden::parameters();
        change(movie);
        try {
            const ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
            ADD_FAILURE() << label;
        } catch (const ZEBWriterError& error) {
            EXPECT_EQ(error.label(), label);
            EXPECT_EQ(error.value(), value) << label;
            EXPECT_EQ(std::string(error.what()),
                      "ZEBWriter: " + std::string(label) +
                          " is out of range for ZEB1 (32-bit limit). Value=" + std::to_string(value) +
                          ". The resulting .zeb would exceed format limits (e.g., > 4 GB).");
        }
        EXPECT_TRUE(disk.bytes.empty()) << label;
    }
    MemoryDisk disk;
    MovieParameters movie = golden::parameters();
    movie.width = movie.height = movie.fps = movie.qlMode = 65535;
    movie.totalFrames = 4294967295;
    EXPECT_NO_THROW(ZEBWriter(std::make_unique<MemoryWritableFile>(disk), movie));
}

TEST(ZEBWriterTest, RefusesOutputsThatCannotBeCreated) {
    const TemporaryFolder folder;
    for (const std::string& path : {folder.path(), folder.file("no/folder.zeb")}) {
        try {
            const ZEBWriter writer(path, golden::parameters());
            ADD_FAILURE() << path;
        } catch (const ZEBConverterError& error) {
            EXPECT_EQ(error.errorCase(), ZEBConverterError::Case::cannotCreateOutput);
            EXPECT_EQ(std::string(error.what()), "Kann Ausgabedatei nicht erstellen: " + path);
        }
    }
    EXPECT_TRUE(std::filesystem::is_directory(folder.path()));
}

TEST(ZEBWriterTest, ReplacesALinkAndNotItsTarget) {
    const TemporaryFolder folder;
    std::ofstream(folder.file("target")) << "untouched";
    std::filesystem::create_symlink(folder.file("target"), folder.file("movie.zeb"));
    ZEBWriter(folder.file("movie.zeb"), golden::parameters()).close();
    EXPECT_EQ(contents(folder.file("target")).size(), 9u);
    EXPECT_FALSE(std::filesystem::is_symlink(folder.file("movie.zeb")));
}

/// Memory that can be measured but not touched: sizes must be refused before anything is copied.
class UntouchableBytes {
public:
    explicit UntouchableBytes(std::size_t size, int protection = PROT_NONE)
        : m_size(size),
          m_place(::mmap(nullptr, size, protection, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {
        if (m_place == MAP_FAILED) throw std::bad_alloc();
    }
    UntouchableBytes(const UntouchableBytes&) = delete;
    UntouchableBytes& operator=(const UntouchableBytes&) = delete;
    ~UntouchableBytes() { ::munmap(m_place, m_size); }

    std::span<const std::uint8_t> first(std::size_t count) const {
        return {static_cast<const std::uint8_t*>(m_place), count};
    }

private:
    std::size_t m_size;
    void* m_place;
};

TEST(ZEBWriterTest, RefusesSecondsBeyondThirtyTwoBitsUnwritten) {
    constexpr std::size_t tooMuch = std::size_t{1} << 32;
    const UntouchableBytes bytes(tooMuch);
    const std::span<const std::uint8_t> small;
    const struct {
        const char* label;
        std::uint64_t value;
        std::span<const std::uint8_t> sound;
        std::vector<std::span<const std::uint8_t>> frames;
    } cases[] = {
        {"sound data size", tooMuch, bytes.first(tooMuch), {bytes.first(tooMuch)}},
        {"frame data size", tooMuch, small, {small, bytes.first(tooMuch)}},
        {"one-second block length", tooMuch + 7, bytes.first(tooMuch - 1), {small}},
        {"one-second block length",
         tooMuch,
         small,
         {bytes.first(tooMuch / 2), bytes.first(tooMuch / 2 - 12)}},
    };
    for (const auto& [label, value, sound, frames] : cases) {
        MemoryDisk disk;
        ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
        const Bytes before = disk.bytes;
        try {
            writer.writeSecond(sound, frames);
            ADD_FAILURE() << label;
        } catch (const ZEBWriterError& error) {
            EXPECT_EQ(error.label(), label);
            EXPECT_EQ(error.value(), value) << label;
        }
        EXPECT_EQ(disk.bytes, before) << label;
        // The refused second has taken its place in the index.
        write(writer, golden::seconds()[0]);
        writer.finish();
        EXPECT_EQ(disk.bytes[golden::index + 3], golden::firstBlock);
        EXPECT_EQ(disk.bytes[golden::index + 7], golden::firstBlock);
    }
}

/// Keeps the beginning of what is written and forgets the rest.
class ForgetfulFile : public MemoryWritableFile {
public:
    explicit ForgetfulFile(MemoryDisk& disk) : MemoryWritableFile(disk) {}

    void write(std::span<const std::uint8_t> bytes) override {
        if (bytes.size() < 1000) MemoryWritableFile::write(bytes);
    }
};

TEST(ZEBWriterTest, LastBlockMayStartAtTheLastOffset) {
    constexpr std::uint64_t lastOffset = 0xFFFFFFFF;
    constexpr std::size_t piece = std::size_t{128} << 20;
    const UntouchableBytes zeros(piece, PROT_READ);
    MemoryDisk disk;
    MovieParameters movie = golden::parameters();
    movie.frameIndexCount = 34;
    ZEBWriter writer(std::make_unique<ForgetfulFile>(disk), movie);
    const std::uint64_t header = writer.bytesWritten();
    while (lastOffset - writer.bytesWritten() > piece)
        writer.writeSecond(zeros.first(piece - 8), {});
    writer.writeSecond(zeros.first(lastOffset - writer.bytesWritten() - 8), {});
    EXPECT_EQ(writer.bytesWritten(), lastOffset);
    writer.writeSecond({}, {});
    EXPECT_EQ(writer.bytesWritten(), lastOffset + 8);
    try {
        writer.writeSecond({}, {});
        ADD_FAILURE();
    } catch (const ZEBWriterError& error) {
        EXPECT_EQ(error.label(), "one-second block file offset");
        EXPECT_EQ(error.value(), lastOffset + 8);
    }
    // The refused one has no place in the index: the last entry is the block before it.
    writer.finish();
    const Bytes index(disk.bytes.begin() + golden::index, disk.bytes.begin() + golden::index + 34 * 4);
    const Bytes tail(index.end() - 8, index.end());
    EXPECT_EQ(header, golden::index + 34u * 4);
    EXPECT_EQ(tail, (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
}

TEST(ZEBWriterTest, FinishNeedsAnEntryForEverySecondAndNoMore) {
    MemoryDisk disk;
    MovieParameters movie = golden::parameters();
    movie.frameIndexCount = 1;
    ZEBWriter crowded(std::make_unique<MemoryWritableFile>(disk), movie);
    for (const Second& second : golden::seconds())
        write(crowded, second);
    try {
        crowded.finish();
        ADD_FAILURE();
    } catch (const ZEBWriterError& error) {
        EXPECT_EQ(error.label(), "frame index offsets count");
        EXPECT_EQ(error.value(), 2u);
    }

    MemoryDisk roomy;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(roomy), golden::parameters());
    write(writer, golden::seconds()[0]);
    writer.finish();
    Bytes expected = golden::firstSecondAlone();
    expected[golden::totalFrames + 3] = 4;  // as announced
    EXPECT_EQ(roomy.bytes, expected);
}

/// Writes the golden movie; returns how many seconds went well, or -1 when there was not even a writer.
int writeGoldenMovie(MemoryDisk& disk) {
    int seconds = -1;
    try {
        ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
        seconds = 0;
        for (const Second& second : golden::seconds()) {
            write(writer, second);
            ++seconds;
        }
        writer.finish();
        writer.close();
    } catch (const FileError& error) {
        EXPECT_EQ(error.code(), ENOSPC);
    }
    return seconds;
}

TEST(ZEBWriterTest, EveryFailureLeavesWholeSeconds) {
    MemoryDisk healthy;
    ASSERT_EQ(writeGoldenMovie(healthy), 2);
    const Bytes expected[] = {{}, golden::firstSecondAlone(), golden::movie()};
    for (const bool forGood : {false, true}) {
        for (int call = 1; call <= healthy.calls; ++call) {
            SCOPED_TRACE("call " + std::to_string(call) + (forGood ? " and all after it" : ""));
            MemoryDisk disk;
            disk.failFrom = call;
            disk.failTo = forGood ? std::numeric_limits<int>::max() : call;
            const int seconds = writeGoldenMovie(disk);
            if (seconds < 0) {
                if (!forGood) {
                    EXPECT_TRUE(disk.bytes.empty());
                }
                continue;
            }
            EXPECT_EQ(factsOf(disk.bytes).wholeSeconds, seconds);
            // A disk that stays broken cannot cut the torn block off either.
            if (!forGood) {
                EXPECT_EQ(endOfBlocks(disk.bytes), disk.bytes.size());
            }

            disk.failFrom = disk.failTo = 0;
            MemoryReadableFile source(disk.bytes);
            MemoryWritableFile target(disk);
            EXPECT_EQ(finishPartialFile(source, target), seconds);
            if (seconds > 0) {
                EXPECT_EQ(disk.bytes, expected[seconds]);
            }
        }
    }
}

TEST(ZEBWriterTest, CloseReportsTheFirstFailure) {
    for (const int lastToFail : {0, 1, 2}) {
        MemoryDisk disk;
        ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
        disk.failFrom = disk.calls + 1;
        disk.failTo = disk.calls + lastToFail;
        const int before = disk.calls;
        if (lastToFail == 0) {
            EXPECT_NO_THROW(writer.close());
        } else {
            try {
                writer.close();
                ADD_FAILURE();
            } catch (const FileError& error) {
                EXPECT_EQ(error.path(), std::to_string(before + 1));
            }
        }
        EXPECT_EQ(disk.calls, before + 2) << "closed although the flush failed";
    }
}

TEST(ZEBWriterTest, FullDiskLeavesAMovieOfWholeSeconds) {
    const TemporaryFolder folder;
    const std::string path = folder.file("movie.zeb");
    MovieParameters movie = golden::parameters();
    movie.frameIndexCount = 20;
    movie.totalFrames = 40;
    const Second second{Bytes(20000, 128), {Bytes(5000, 1), Bytes(5000, 2)}};
    ZEBWriter writer(path, movie);
    std::string text;
    {
        const FileSizeLimit limit(100000);
        try {
            for (int index = 0; index < 20; ++index)
                write(writer, second);
        } catch (const FileError& error) {
            text = error.what();
        }
        EXPECT_NO_THROW(writer.close());
        EXPECT_EQ(text, path + ": File too large");
        const MovieFacts facts = factsOf(contents(path));
        EXPECT_EQ(facts.wholeSeconds, 3);
        EXPECT_FALSE(facts.isFinished);
        EXPECT_EQ(endOfBlocks(contents(path)), facts.fileSize);
        EXPECT_EQ(finishPartialFile(path), 3);
    }
    EXPECT_TRUE(factsOf(contents(path)).isFinished);
    EXPECT_EQ(factsOf(contents(path)).header.frameCount, 6);
}

}  // namespace
}  // namespace zeb
