#include "format/ZEBReader.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "format/ZEBFormatError.h"
#include "format/ZEBReaderError.h"
#include "tests/format/GoldenMovie.h"

namespace zeb {
namespace {

using test::golden::Bytes;

class BytesFile : public ReadableFile {
public:
    explicit BytesFile(const Bytes& bytes) : m_bytes(bytes) {}
    std::size_t readAt(std::uint64_t offset, std::span<std::uint8_t> buffer) override {
        if (offset >= m_bytes.size()) return 0;
        const std::size_t count = std::min<std::size_t>(buffer.size(), m_bytes.size() - offset);
        std::memcpy(buffer.data(), m_bytes.data() + offset, count);
        return count;
    }
    std::uint64_t size() override { return m_bytes.size(); }

private:
    const Bytes& m_bytes;
};

ZEBReader readerOf(const Bytes& bytes) {
    return ZEBReader([&bytes] { return std::make_unique<BytesFile>(bytes); });
}

/// What went wrong, as "domain code text"; empty when nothing did.
template <typename Action>
std::string failure(Action action) {
    try {
        action();
    } catch (const PlatformError& error) {
        return error.domain() + " " + std::to_string(error.code()) + " " + error.what();
    }
    return {};
}

constexpr int fps = 2, seconds = 3;

/// Six frames of one pixel, frame k with red k; the sound of second s is `s` three times.
Bytes countingMovie() {
    Bytes bytes = {'Z', 'E', 'B', '1', 0,    0,    0, 38, 0, 0,  // no title
                   0,   1,   0,   1,   0,    fps,  0, 32, 0, 0, 0, fps * seconds,
                   0,   0,   0,   0,   0x4E, 0x20, 0, 1,  0, 0, 0, 0};
    bytes.resize(bytes.size() + 4 * seconds);  // no index: blocks are walked
    for (std::uint8_t s = 0; s < seconds; ++s) {
        bytes.insert(bytes.end(), {0, 0, 0, 4 + 3 + fps * 8, 0, 0, 0, 3, s, s, s});
        for (std::uint8_t f = 0; f < fps; ++f) {
            bytes.insert(bytes.end(), {0, 0, 0, 4, 0, 0, static_cast<std::uint8_t>(s * fps + f), 255});
        }
    }
    return bytes;
}

int shownFrame(ZEBReader& reader, bool loop = false) {
    const std::optional<FrameImage> image = reader.nextFrame(loop);
    return image ? image->pixels[2] : -1;
}

TEST(ZEBReader, ReadsTheHeaderThatTheWriterWrites) {
    const Bytes movie = test::golden::movie();
    ZEBReader reader = readerOf(movie);
    const ZEBHeader header = reader.readHeader();
    EXPECT_EQ(header.title, "QL!");
    EXPECT_EQ(header.frameCount, 4);
    EXPECT_EQ(header.indexOffsets, (std::vector<std::uint32_t>{46, 67}));
    const Soundtrack sound = reader.readAllAudio();
    EXPECT_EQ(sound.bytes, (Bytes{0x80, 0x81, 0x7F, 0x80, 0x80, 0x80}));
    EXPECT_EQ(sound.sampleRate, 20000);
}

TEST(ZEBReader, PlaysSeeksAndLoops) {
    const Bytes movie = countingMovie();
    ZEBReader reader = readerOf(movie);
    EXPECT_EQ(shownFrame(reader), -1);  // nothing is open yet
    reader.readHeader();
    for (int frame = 0; frame < fps * seconds; ++frame)
        EXPECT_EQ(shownFrame(reader), frame);
    EXPECT_EQ(failure([&] { reader.nextFrame(false); }), "ZEB 999 EOF");
    EXPECT_EQ(shownFrame(reader), -1);
    EXPECT_EQ(shownFrame(reader, true), 0);
    for (const int target : {4, 1, 5, 0, 3}) {
        reader.seekToFrame(target);
        EXPECT_EQ(shownFrame(reader), target);
    }
    reader.seekToFrame(-5);
    EXPECT_EQ(shownFrame(reader), 0);
    reader.seekToFrame(100);
    EXPECT_EQ(shownFrame(reader), 5);
}

TEST(ZEBReader, FailsWithTheFittingTextAndRecoversBySeeking) {
    struct Case {
        Bytes bytes;
        std::string expected;
    };
    const Bytes whole = countingMovie();
    const std::vector<Case> cases = {
        {{}, "ZEB 999 Unerwartetes EOF"},
        {{'Z', 'E', 'B', '2', 0, 0, 0, 0}, "ZEB 1 Kein ZEB1-File"},
        {{'Z', 'E', 'B', '1', 0, 0, 0, 3, 0, 0, 0}, "ZEB 999 Header zu kurz"},
        {{'Z', 'E', 'B', '1', 0, 0, 0, 2, 0, 9}, "ZEB 999 Titel außerhalb Header"},
        {{'Z', 'E', 'B', '1', 255, 255, 255, 255, 0, 0}, "ZEB 999 Unerwartetes EOF"},
    };
    for (const Case& test : cases) {
        ZEBReader reader = readerOf(test.bytes);
        EXPECT_EQ(failure([&] { reader.readHeader(); }), test.expected);
    }
    Bytes cut = whole;
    cut.resize(cut.size() - 1);
    ZEBReader reader = readerOf(cut);
    reader.readHeader();
    reader.seekToFrame(5);
    EXPECT_EQ(failure([&] { reader.nextFrame(false); }), "ZEB 999 Unerwartetes EOF");
    reader.seekToFrame(2);
    EXPECT_EQ(shownFrame(reader), 2);
}

TEST(ZEBReader, GathersSoundAsFarAsItCanBeTold) {
    const Bytes whole = countingMovie();
    struct Case {
        std::size_t size;
        std::string expected;
        std::size_t bytes;
    };
    const std::size_t block = 4 + 4 + 3 + fps * 8;
    for (const Case& test :
         {Case{0, "", 0}, Case{3, "ZEBReader 2 Truncated u32", 0}, Case{4, "ZEBReader 3 Unexpected EOF", 0},
          Case{20, "ZEBReader 1 Unexpected EOF", 0}, Case{46 + 4, "ZEBReader 3 Unexpected EOF", 0},
          Case{46 + 9, "ZEBReader 1 Unexpected EOF", 0}, Case{46 + 11, "", 3},
          Case{46 + block + 6, "ZEBReader 2 Truncated u32", 0}, Case{46 + 3 * block, "", 9}}) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(test.size));
        ZEBReader reader = readerOf(cut);
        Soundtrack sound;
        EXPECT_EQ(failure([&] { sound = reader.readAllAudio(); }), test.expected) << test.size;
        EXPECT_EQ(sound.bytes.size(), test.bytes) << test.size;
    }
}

}  // namespace
}  // namespace zeb
