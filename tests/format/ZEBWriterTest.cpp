#include "format/ZEBWriter.h"

#include <gmock/gmock.h>

#include <functional>
#include <limits>

#include "format/ZEBErrors.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"
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

/// The `ZEBWriterError` that `action` throws, as "LABEL VALUE".
std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ZEBWriterError& error) {
        return std::string(error.label()) + " " + std::to_string(error.value());
    }
    return "none";
}

TEST(ZEBWriterTest, ReplacesExistingFileWithGoldenMovie) {
    const TemporaryFolder folder;
    const std::string path = folder.file("movie.zeb");
    store(path, "something older and longer than nothing");
    ZEBWriter writer(path, golden::parameters());
    for (const Second& second : golden::seconds())
        write(writer, second);
    EXPECT_EQ(contents<Bytes>(path), golden::unfinishedMovie());
    EXPECT_EQ(writer.bytesWritten(), golden::movie().size());
    writer.finish();
    writer.close();
    EXPECT_EQ(contents<Bytes>(path), golden::movie());
}

TEST(ZEBWriterTest, StoresEveryFieldAtItsOffset) {
    MovieParameters movie;
    movie.width = 0x0102;
    movie.height = 0x0304;
    movie.fps = 0x0506;
    movie.qlMode = 0x0708;
    movie.totalFrames = 0x090A0B0C;
    movie.frameIndexCount = 0x100;
    movie.audioChannels = 0x0D0E;
    MemoryDisk disk;
    const ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
    Bytes expected{'Z', 'E', 'B', '1', 0,  0, 4, 26, 0, 0,    1,    2,  3,  4, 5, 6, 7,
                   8,   9,   10,  11,  12, 0, 0, 0,  0, 0x4E, 0x20, 13, 14, 0, 0, 0, 0};
    expected.resize(8 + 26 + 4 * 0x100);
    EXPECT_EQ(disk.bytes, expected);
}

/// The number of the failed call. Empty if `action` succeeds.
std::string failedCall(const std::function<void()>& action) {
    try {
        action();
    } catch (const FileError& error) {
        return error.path();
    }
    return {};
}

TEST(ZEBWriterTest, TruncatesFileAfterFailedWrite) {
    for (const bool cuttingFails : {false, true}) {
        MemoryDisk disk;
        disk.failFrom = 1;
        disk.failTo = cuttingFails ? 2 : 1;
        EXPECT_EQ(
            failedCall([&] { ZEBWriter(std::make_unique<MemoryWritableFile>(disk), golden::parameters()); }),
            "1");
        EXPECT_EQ(disk.bytes.size(), cuttingFails ? golden::firstBlock / 2 : 0U);
    }
    for (const int failures : {1, 2, 3}) {  // fails the write, also the truncation, also the seek back
        MemoryDisk disk;
        MovieParameters movie = golden::parameters();
        movie.frameIndexCount = 3;
        ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
        write(writer, golden::seconds()[0]);
        const Bytes before = disk.bytes;
        const int call = disk.calls + 1;
        disk.failFrom = call;
        disk.failTo = call + failures - 1;
        EXPECT_EQ(failedCall([&] { write(writer, golden::seconds()[1]); }), std::to_string(call));
        EXPECT_EQ(writer.bytesWritten(), before.size());
        EXPECT_EQ(disk.bytes.size(), before.size() + (failures == 1 ? 0 : (4 + 21) / 2));
        if (failures > 1) continue;
        // The next second is written where the failed one would have been.
        EXPECT_EQ(disk.bytes, before);
        write(writer, golden::seconds()[1]);
        EXPECT_EQ(disk.bytes.size(), before.size() + 4 + 21);
        writer.finish();
        EXPECT_EQ(disk.bytes[golden::maxSecondBlockSize + 3], 25);
        EXPECT_EQ(disk.bytes[golden::index + 7], before.size());
        EXPECT_EQ(disk.bytes[golden::index + 11], before.size());
    }
}

TEST(ZEBWriterTest, CloseFlushesAndReportsFirstFailure) {
    for (const auto& [from, to, expected] : {std::tuple{0, 0, ""}, {1, 1, "1"}, {2, 2, "2"}, {1, 2, "1"}}) {
        MemoryDisk disk;
        ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
        disk.calls = 0;
        disk.failFrom = from;
        disk.failTo = to;
        EXPECT_EQ(failedCall([&] { writer.close(); }), expected);
        EXPECT_EQ(disk.calls, 2);  // both flush and close are called
    }
    // Finishing ends with a flush, too.
    MemoryDisk disk;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
    writer.finish();
    EXPECT_EQ(disk.journal.back().kind, MemoryDisk::Call::Kind::synchronise);
    EXPECT_THROW(createMovieFile("/nonexistent/folder/movie.zeb"), ZEBConverterError);
}

TEST(ZEBWriterTest, StoresTitlesInLatin1OrUTF8) {
    Bytes longest(2 + 65536, 'x');
    longest[0] = longest[1] = 0xFF;
    longest.back() = 0;
    const struct {
        std::string title;
        Bytes expected;  ///< length, title, pad
    } cases[] = {
        {"", {0, 0}},
        {"a\u0080\u00FF", {0, 3, 'a', 0x80, 0xFF, 0}},  // all of Latin-1
        {"\u0100", {0, 2, 0xC4, 0x80}},                 // the first character outside Latin-1
        {"ab", {0, 2, 'a', 'b'}},
        {"Caf\u00E9", {0, 4, 'C', 'a', 'f', 0xE9}},
        {"5 \u20AC", {0, 5, '5', ' ', 0xE2, 0x82, 0xAC, 0}},
        {"\xED\xA0\x80", {0, 0}},  // not UTF-8
        {std::string(70000, 'x'), longest},
    };
    for (const auto& [title, expected] : cases) {
        MemoryDisk disk;
        MovieParameters movie = golden::parameters();
        movie.title = title;
        const ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
        ASSERT_GT(disk.bytes.size(), 8 + expected.size());
        EXPECT_TRUE(std::equal(expected.begin(), expected.end(), disk.bytes.begin() + 8)) << title;
    }
}

TEST(ZEBWriterTest, ReportsFirstValueOutOfRange) {
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    const struct {
        const char* label;
        std::uint64_t value;
        void (*change)(MovieParameters&);
    } cases[] = {
        {"width", 0, [](MovieParameters& m) { m.width = -1, m.height = -1; }},
        {"qlMode", 70000, [](MovieParameters& m) { m.qlMode = 70000, m.totalFrames = -1; }},
        {"totalFrames", 4294967296, [](MovieParameters& m) { m.totalFrames = 4294967296; }},
        // 30 bytes including the title, and 4 bytes per index entry.
        {"header size", 30 + 4 * 1073741817ull, [](MovieParameters& m) { m.frameIndexCount = 1073741817; }},
        {"header size", ~0ull, [](MovieParameters& m) { m.frameIndexCount = huge; }},
    };
    for (const auto& [label, value, change] : cases) {
        MemoryDisk disk;
        MovieParameters movie = golden::parameters();
        change(movie);
        EXPECT_EQ(errorOf([&] { ZEBWriter(std::make_unique<MemoryWritableFile>(disk), movie); }),
                  label + (" " + std::to_string(value)));
        EXPECT_TRUE(disk.bytes.empty()) << label;
    }
    MemoryDisk disk;
    MovieParameters movie = golden::parameters();
    movie.width = movie.height = movie.fps = movie.qlMode = 65535;
    movie.totalFrames = 4294967295;
    movie.frameIndexCount = 0;
    ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), movie);
    write(writer, golden::seconds()[0]);
    EXPECT_EQ(errorOf([&] { writer.finish(); }), "frame index offsets count 1");
}

TEST(ZEBWriterTest, RejectsOversizedSecondsBeforeWriting) {
    constexpr std::size_t tooMuch = std::size_t{1} << 32;
    // The spans refer to one byte only: sizes must be checked before copying.
    const std::uint8_t byte = 0;
    const auto bytes = [&](std::size_t size) { return std::span(&byte, size); };
    const std::span<const std::uint8_t> small;
    const struct {
        const char* label;
        std::uint64_t value;
        std::span<const std::uint8_t> sound;
        std::vector<std::span<const std::uint8_t>> frames;
    } cases[] = {
        {"sound data size", tooMuch, bytes(tooMuch), {bytes(tooMuch)}},
        {"frame data size", tooMuch, small, {small, bytes(tooMuch)}},
        {"one-second block length", tooMuch + 7, bytes(tooMuch - 1), {small}},
        {"one-second block length", tooMuch, small, {bytes(tooMuch / 2), bytes(tooMuch / 2 - 12)}},
    };
    for (const auto& refused : cases) {
        MemoryDisk disk;
        ZEBWriter writer(std::make_unique<MemoryWritableFile>(disk), golden::parameters());
        const Bytes before = disk.bytes;
        EXPECT_EQ(errorOf([&] { writer.writeSecond(refused.sound, refused.frames); }),
                  refused.label + (" " + std::to_string(refused.value)));
        EXPECT_EQ(disk.bytes, before) << refused.label;
        // The rejected second has used an index entry.
        write(writer, golden::seconds()[0]);
        writer.finish();
        EXPECT_EQ(disk.bytes[golden::index + 3], golden::firstBlock);
        EXPECT_EQ(disk.bytes[golden::index + 7], golden::firstBlock);
    }
}

/// Stores small writes only and discards large ones.
class ForgetfulFile : public MemoryWritableFile {
public:
    using MemoryWritableFile::MemoryWritableFile;
    void write(std::span<const std::span<const std::uint8_t>> pieces) override {
        for (const auto piece : pieces) {
            if (piece.size() < 1000) MemoryWritableFile::write(std::span(&piece, 1));
        }
    }
};

TEST(ZEBWriterTest, AllowsBlockAtLastOffsetOnly) {
    constexpr std::uint64_t lastOffset = 0xFFFFFFFF;
    constexpr std::size_t piece = std::size_t{32} << 20;
    const Bytes zeroBytes(piece);
    const std::span zeros(zeroBytes);
    MemoryDisk disk;
    MovieParameters movie = golden::parameters();
    movie.frameIndexCount = 130;
    ZEBWriter writer(std::make_unique<ForgetfulFile>(disk), movie);
    while (lastOffset - writer.bytesWritten() > piece)
        writer.writeSecond(zeros.first(piece - 8), {});
    writer.writeSecond(zeros.first(lastOffset - writer.bytesWritten() - 8), {});
    writer.writeSecond({}, {});
    EXPECT_EQ(errorOf([&] { writer.writeSecond({}, {}); }),
              "one-second block file offset " + std::to_string(lastOffset + 8));
    // The rejected block has no index entry: the last entry is the block before it.
    writer.finish();
    const auto end = disk.bytes.begin() + golden::index + 130 * 4;
    EXPECT_EQ(Bytes(end - 8, end), (Bytes{0xFF, 0xFF, 0xFF, 0xFF, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace zeb
