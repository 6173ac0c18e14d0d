#include "format/ZEBReader.h"

#include <gtest/gtest.h>

#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using Bytes = std::vector<std::uint8_t>;

ZEBReader readerOf(const Bytes& bytes) {
    return ZEBReader([&bytes] { return std::make_unique<MemoryReadableFile>(bytes); });
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
        for (int frame = target; frame < fps * seconds; ++frame)
            EXPECT_EQ(shownFrame(reader), frame);
    }
    reader.seekToFrame(-5);
    EXPECT_EQ(shownFrame(reader), 0);
    reader.seekToFrame(100);
    EXPECT_EQ(shownFrame(reader), 5);
}

/// Cut anywhere, it shows every frame that is whole and then says that the file ends; seeking leads back.
TEST(ZEBReader, ShowsWhatACutMovieHolds) {
    const Bytes whole = countingMovie();
    constexpr std::size_t header = 46, blockStart = 4 + 4 + 3, block = blockStart + fps * 8;
    for (std::size_t size = header; size <= whole.size(); ++size) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        ZEBReader reader = readerOf(cut);
        reader.readHeader();
        const std::size_t inBlock = (size - header) % block;
        const auto frames = static_cast<int>((size - header) / block * fps +
                                             (inBlock < blockStart ? 0 : (inBlock - blockStart) / 8));
        for (int frame = 0; frame < frames; ++frame)
            ASSERT_EQ(shownFrame(reader), frame) << size;
        EXPECT_EQ(failure([&] { reader.nextFrame(false); }),
                  inBlock < 4 ? "ZEB 999 EOF" : "ZEB 999 Unerwartetes EOF")
            << size;
        if (frames == 0) continue;
        reader.seekToFrame(frames - 1);
        EXPECT_EQ(shownFrame(reader), frames - 1) << size;
    }
}

TEST(ZEBReader, GathersSoundAsFarAsItCanBeTold) {
    const Bytes whole = countingMovie();
    for (const auto& [size, expected] : {std::pair<std::size_t, std::string>{3, "ZEBReader 2 Truncated u32"},
                                         {20, "ZEBReader 1 Unexpected EOF"},
                                         {46 + 4, "ZEBReader 3 Unexpected EOF"},
                                         {46 + 9, "ZEBReader 1 Unexpected EOF"},
                                         {46 + 11, ""},
                                         {whole.size(), ""}}) {
        const Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        ZEBReader reader = readerOf(cut);
        Bytes sound;
        EXPECT_EQ(failure([&] { sound = reader.readAllAudio().bytes; }), expected) << size;
        EXPECT_EQ(sound.size(), size == whole.size() ? 9U : expected.empty() ? 3U : 0U) << size;
    }
}

}  // namespace
}  // namespace zeb
