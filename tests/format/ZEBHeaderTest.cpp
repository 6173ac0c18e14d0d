#include "format/ZEBHeader.h"

#include <gmock/gmock.h>

#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

TEST(ZEBHeaderTest, ParsesTheGoldenMovie) {
    const Bytes movie = golden::movie();
    const ZEBHeader header = parseHeader(std::span(movie).subspan(8, golden::firstBlock - 8));
    EXPECT_EQ(header.title, "QL!");
    EXPECT_EQ(header.width, 16);
    EXPECT_EQ(header.height, 8);
    EXPECT_EQ(header.fps, 2);
    EXPECT_EQ(header.mode, 32);
    EXPECT_EQ(header.frameCount, 4);
    EXPECT_EQ(header.blockSize, 25);
    EXPECT_EQ(header.sampleRate, 20000);
    EXPECT_EQ(header.audioChannels, 1);
    EXPECT_EQ(header.options, 1);
    EXPECT_THAT(header.indexOffsets, testing::ElementsAre(46, 67));
}

TEST(ZEBHeaderTest, ReadsTitlesAndTakesZeroAsOne) {
    for (const auto& [stored, title] : {std::pair<std::string, std::string>{"5 \xE2\x82\xAC", "5 €"},
                                        {"Caf\xE9", "ZEB"},      // Latin-1
                                        {"\xE2\x82", "ZEB"}}) {  // a cut character
        Bytes body{0, static_cast<std::uint8_t>(stored.size())};
        body.insert(body.end(), stored.begin(), stored.end());
        body.resize((body.size() + 1) / 2 * 2 + 24);
        const ZEBHeader header = parseHeader(body);
        EXPECT_EQ(header.title, title);
        EXPECT_TRUE(header.width == 1 && header.height == 1 && header.fps == 1);
    }
}

TEST(ZEBHeaderTest, BelievesSizesAsFarAsTheFileReaches) {
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
        {changed(7, {85}), "999 Unerwartetes EOF"},  // one byte more than there is
        {changed(7, {3}), "999 Titel außerhalb Header"},
        {changed(7, {29}), "999 Header zu kurz"},  // one byte less than all fields
        {changed(8, {0xFF, 0xFF}), "999 Titel außerhalb Header"},
        {changed(8, {0, 36}), "999 Header zu kurz"},
    };
    for (const auto& [bytes, error] : cases) {
        MemoryReadableFile file(bytes);
        EXPECT_EQ(failure([&] { readHeader(file); }), "ZEB " + error) << testing::PrintToString(bytes);
    }
    // What does not fill an index entry is none.
    for (const std::uint8_t size : {std::uint8_t{30}, std::uint8_t{33}, std::uint8_t{34}}) {
        const Bytes bytes = changed(7, {size});
        MemoryReadableFile file(bytes);
        EXPECT_EQ(readHeader(file).places.frameIndexCount, (size - 30U) / 4);
    }
}

}  // namespace
}  // namespace zeb
