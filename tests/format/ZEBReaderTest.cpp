#include "format/ZEBReader.h"

#include <gmock/gmock.h>

#include "format/ZEBErrors.h"
#include "format/ZEBHeader.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

TEST(ZEBHeaderTest, ParsesEveryField) {
    Bytes movie = golden::movie();
    for (std::uint8_t byte = 0; byte < 22; ++byte)
        movie[14U + byte] = static_cast<std::uint8_t>(2 * byte + 1);
    const ZEBHeader header = parseHeader(std::span(movie).subspan(8, golden::firstBlock - 8));
    EXPECT_EQ(header.title, "QL!");
    EXPECT_EQ(
        std::tuple(header.width, header.height, header.fps, header.mode, header.frameCount, header.blockSize),
        std::tuple(0x0103, 0x0507, 0x090B, 0x0D0F, 0x11131517, 0x191B1D1F));
    EXPECT_EQ(std::tuple(header.sampleRate, header.audioChannels, header.options),
              std::tuple(0x2123, 0x2527, 0x292B));
    EXPECT_THAT(header.indexOffsets, testing::ElementsAre(46, 67));
}

TEST(ZEBHeaderTest, DecodesTitlesAndReplacesZeroSizes) {
    for (const auto& [stored, title] : {std::pair<std::string, std::string>{"5 \xE2\x82\xAC", "5 €"},
                                        {"Caf\xE9", "ZEB"},      // Latin-1
                                        {"\xE2\x82", "ZEB"}}) {  // an incomplete character
        Bytes body{0, static_cast<std::uint8_t>(stored.size())};
        body.insert(body.end(), stored.begin(), stored.end());
        body.resize((body.size() + 1) / 2 * 2 + 24);
        const ZEBHeader header = parseHeader(body);
        EXPECT_EQ(header.title, title);
        EXPECT_TRUE(header.width == 1 && header.height == 1 && header.fps == 1);
    }
}

TEST(ZEBHeaderTest, AcceptsOnlyWellFormedUTF8Titles) {
    for (const std::string title :
         {"\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
          "\xF0\x90\x80\x80", "\xF4\x8F\xBF\xBF", "a\xC3\xA4z"})
        EXPECT_EQ(decodeTitle(Bytes(title.begin(), title.end())), title);
    for (const std::string title :
         {"\x80", "\xBF", "\xC1\xBF", "\xC2", "\xC2\x7F", "\xC2\xC0", "\xE0\x9F\xBF", "\xE1\x80",
          "\xE1\x80\x41", "\xED\xA0\x80", "\xED\xBF\xBF", "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80",
          "\xF8\x88\x80\x80\x80", "\xFF", "ab\xC3"})
        EXPECT_EQ(decodeTitle(Bytes(title.begin(), title.end())), "ZEB") << testing::PrintToString(title);
}

TEST(ZEBHeaderTest, LimitsSizeFieldsByFileSize) {
    const auto changed = [](std::size_t place, std::initializer_list<std::uint8_t> bytes) {
        Bytes file = golden::movie();
        std::ranges::copy(bytes, file.begin() + static_cast<std::ptrdiff_t>(place));
        return file;
    };
    const std::pair<Bytes, std::string> cases[] = {
        {{'Z', 'E', 'B'}, "999 Unerwartetes EOF"},
        {changed(0, {'z'}), "1 Kein ZEB1-File"},
        {{'Z', 'E', 'B', '1', 0, 0, 0}, "999 Unerwartetes EOF"},
        {{'Z', 'E', 'B', '1', 0, 0, 0, 0}, "999 Header zu kurz"},
        {changed(4, {0xFF, 0xFF, 0xFF, 0xFF}), "999 Unerwartetes EOF"},
        {changed(7, {85}), "999 Unerwartetes EOF"},  // one byte more than the file has
        {changed(7, {3}), "999 Titel außerhalb Header"},
        {changed(7, {29}), "999 Header zu kurz"},  // one byte less than all fields
        {changed(8, {0xFF, 0xFF}), "999 Titel außerhalb Header"},
        {changed(8, {0, 36}), "999 Header zu kurz"},
    };
    for (const auto& [bytes, error] : cases) {
        MemoryReadableFile file(bytes);
        EXPECT_EQ(failure([&] { readHeader(file); }), "ZEB " + error) << testing::PrintToString(bytes);
    }
    // The rest of the header after the longest title is not read, but the file must contain it.
    Bytes cut = changed(4, {0, 2, 0, 0});
    cut.resize(8 + 0x20000);
    MemoryReadableFile cutFile(cut);
    EXPECT_EQ(readHeader(cutFile).places.data, cut.size());
    cut.pop_back();
    EXPECT_EQ(failure([&] { readHeader(cutFile); }), "ZEB 999 Unerwartetes EOF");
    // An incomplete index entry is ignored.
    for (const std::uint8_t size : {std::uint8_t{30}, std::uint8_t{33}, std::uint8_t{34}}) {
        const Bytes bytes = changed(7, {size});
        MemoryReadableFile file(bytes);
        EXPECT_EQ(readHeader(file).places.frameIndexCount, (size - 30U) / 4);
    }
}

ZEBReader readerOf(const Bytes& bytes) {
    return ZEBReader([&bytes] { return std::make_unique<MemoryReadableFile>(bytes); });
}

constexpr int fps = 2, seconds = 3;

/// Six frames of one pixel; frame k has red value k. The sound of second s is three bytes of value s.
Bytes countingMovie() {
    Bytes bytes = {'Z', 'E', 'B', '1', 0,    0,    0, 38, 0, 0,  // no title
                   0,   1,   0,   1,   0,    fps,  0, 32, 0, 0, 0, fps * seconds,
                   0,   0,   0,   0,   0x4E, 0x20, 0, 1,  0, 0, 0, 0};
    bytes.resize(bytes.size() + 4 * seconds);  // empty index: the reader walks the blocks
    for (std::uint8_t s = 0; s < seconds; ++s) {
        bytes.insert(bytes.end(), {0, 0, 0, 4 + 3 + fps * 8, 0, 0, 0, 3, s, s, s});
        for (std::uint8_t f = 0; f < fps; ++f) {
            bytes.insert(bytes.end(), {0, 0, 0, 4, 0, 0, static_cast<std::uint8_t>(s * fps + f), 255});
        }
    }
    return bytes;
}

std::size_t frameAt(std::size_t frame) {
    return 46 + frame / fps * 27 + 15 + frame % fps * 8;
}

int shownFrame(ZEBReader& reader, bool loop = false) {
    const std::optional<FrameImage> image = reader.nextFrame(loop);
    return image ? image->pixels[2] : -1;
}

TEST(ZEBReader, ReadsSeeksAndLoopsFrames) {
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

TEST(ZEBReader, ReportsRunsOfUndecodableFramesOnce) {
    Bytes movie = countingMovie();
    for (const std::size_t frame : {4U, 2U, 1U}) {
        const std::size_t place = frameAt(frame);
        movie[place - 1] = 3;  // record size in bytes: too small for a pixel
        movie.erase(movie.begin() + static_cast<std::ptrdiff_t>(place));
    }
    ZEBReader reader = readerOf(movie);
    reader.readHeader();
    testing::internal::CaptureStdout();
    for (const int shown : {0, -1, -1, 3, -1, 5})
        EXPECT_EQ(shownFrame(reader), shown);
    EXPECT_THAT(testing::internal::GetCapturedStdout(),
                testing::MatchesRegex("ZEB decode failed: [^\n]+\nZEB decode failed: [^\n]+\n"));
    // A file without a valid header has no frames.
    movie[0] = 'z';
    ZEBReader none = readerOf(movie);
    EXPECT_THROW(none.readHeader(), ZEBFormatError);
    EXPECT_NO_THROW(none.seekToFrame(0));
    EXPECT_EQ(shownFrame(none), -1);
}

TEST(ZEBReader, FollowsIndexOnlyToMatchingBlocks) {
    constexpr std::uint8_t first = 46, block = 27, index = 34;
    const std::vector<std::uint8_t> indexes[] = {
        {first, first + block, first + 2 * block},      // right
        {first, 3, 7},                                  // points into the header
        {first, first + block + 1, first + block + 7},  // points into blocks
        {first, 250, 251},                              // points past the end of the file
        {first, first + 2 * block, first + block},      // exchanged
        {first + block, first + block, first},
    };
    for (const auto& offsets : indexes) {
        Bytes movie = countingMovie();
        for (std::size_t second = 0; second < offsets.size(); ++second)
            movie[index + 4 * second + 3] = offsets[second];
        ZEBReader reader = readerOf(movie);
        EXPECT_EQ(reader.readHeader().indexOffsets[1], offsets[1]);
        for (const int target : {5, 3, 0, 2}) {
            reader.seekToFrame(target);
            EXPECT_EQ(shownFrame(reader), target) << testing::PrintToString(offsets);
        }
    }
}

/// For every cut, the reader returns all complete frames and then reports the end of the file. Seeking back
/// works.
TEST(ZEBReader, ReadsAllFramesOfCutMovie) {
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

TEST(ZEBReader, ReadsSoundOrReportsTruncation) {
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
    for (const std::uint8_t rate : {std::uint8_t{0}, std::uint8_t{1}}) {
        Bytes odd = whole;
        odd[26] = 0;
        odd[27] = rate;
        EXPECT_EQ(readerOf(odd).readAllAudio().bytes.size(), rate * 9U);
    }
}

}  // namespace
}  // namespace zeb
