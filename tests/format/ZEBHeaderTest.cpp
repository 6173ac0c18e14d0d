#include "format/ZEBHeader.h"

#include <gmock/gmock.h>

#include <functional>

#include "format/ZEBFormatError.h"
#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

Bytes goldenBody() {
    const Bytes movie = golden::movie();
    return {movie.begin() + 8, movie.begin() + golden::firstBlock};
}

/// "code text" of the `ZEBFormatError` that `action` throws.
std::string errorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const ZEBFormatError& error) {
        EXPECT_EQ(error.domain(), "ZEB");
        return std::to_string(error.code()) + " " + error.what();
    }
    return "none";
}

TEST(ZEBHeaderTest, TellsWhereAHeaderEndsTooEarly) {
    for (std::size_t length = 0; length < goldenBody().size(); ++length) {
        Bytes body = goldenBody();
        body.resize(length);
        const std::string error = errorOf([&] { parseHeader(body); });
        const std::string expected = length < 2    ? "999 Header zu kurz"
                                     : length < 5  ? "999 Titel außerhalb Header"
                                     : length < 30 ? "999 Header zu kurz"
                                                   : "none";
        EXPECT_EQ(error, expected) << length;
        // What does not fill an index entry is none.
        if (error == "none") {
            EXPECT_EQ(parseHeader(body).indexOffsets.size(), (length - 30) / 4);
        }
    }
}

TEST(ZEBHeaderTest, ReadsTitlesAndTakesZeroAsOne) {
    const struct {
        std::string stored;
        std::string title;
    } cases[] = {
        {"5 \xE2\x82\xAC", "5 €"},
        {"Caf\xE9", "ZEB"},   // Latin-1
        {"\xE2\x82", "ZEB"},  // a cut character
    };
    for (const auto& [stored, title] : cases) {
        Bytes body{0, static_cast<std::uint8_t>(stored.size())};
        body.insert(body.end(), stored.begin(), stored.end());
        if (stored.size() % 2 != 0) body.push_back(0);
        body.resize(body.size() + 24);
        const ZEBHeader header = parseHeader(body);
        EXPECT_EQ(header.title, title);
        EXPECT_TRUE(header.width == 1 && header.height == 1 && header.fps == 1);
    }
}

TEST(ZEBHeaderTest, BelievesSizesAsFarAsTheFileReaches) {
    const Bytes movie = golden::movie();
    const auto changed = [&](std::size_t place, std::initializer_list<std::uint8_t> bytes) {
        Bytes file = movie;
        for (const std::uint8_t byte : bytes)
            file.at(place++) = byte;
        return file;
    };
    const struct {
        Bytes file;
        const char* error;
    } cases[] = {
        {{'Z', 'E', 'B'}, "999 Unerwartetes EOF"},
        {changed(0, {'z'}), "1 Kein ZEB1-File"},
        {{'Z', 'E', 'B', '1', 0, 0, 0}, "999 Unerwartetes EOF"},
        {{'Z', 'E', 'B', '1', 0, 0, 0, 0}, "999 Header zu kurz"},
        {changed(4, {0xFF, 0xFF, 0xFF, 0xFF}), "999 Unerwartetes EOF"},
        {changed(7, {85}), "999 Unerwartetes EOF"},  // one byte more than there is
        {changed(7, {84}), "none"},
        {changed(7, {3}), "999 Titel außerhalb Header"},
        {changed(8, {0xFF, 0xFF}), "999 Titel außerhalb Header"},
        {changed(8, {0, 36}), "999 Header zu kurz"},
    };
    for (const auto& [bytes, error] : cases) {
        MemoryReadableFile file(bytes);
        EXPECT_EQ(errorOf([&] { readHeader(file); }), error) << testing::PrintToString(bytes);
    }
}

}  // namespace
}  // namespace zeb
