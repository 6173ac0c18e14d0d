#include "format/MovieFacts.h"

#include <gmock/gmock.h>

#include "tests/format/GoldenMovie.h"
#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using namespace test;
using golden::Bytes;

/// The golden movie cut to `size` bytes (or extended by zeros) with the word at `place` replaced.
Bytes variant(Bytes movie, std::size_t size, std::size_t place = 0, Bytes word = {}) {
    movie.resize(size);
    std::copy(word.begin(), word.end(), movie.begin() + static_cast<std::ptrdiff_t>(place));
    return movie;
}

/// The last index entry leads to a header field that looks like a block up to the end of the file.
Bytes blockInTheHeader() {
    const std::size_t size = golden::movie().size() - 1;
    const auto length = static_cast<std::uint8_t>(size - golden::maxSecondBlockSize - 4);
    const Bytes bytes = variant(golden::movie(), size, golden::maxSecondBlockSize, {0, 0, 0, length});
    return variant(bytes, size, golden::index + 4, {0, 0, 0, golden::maxSecondBlockSize});
}

TEST(MovieFactsTest, TellsHowMuchOfAMovieIsThere) {
    const Bytes movie = golden::movie();
    const Bytes unfinished = golden::unfinishedMovie();
    const std::size_t size = movie.size();
    const struct {
        const char* what;
        Bytes bytes;
        bool isFinished;
        std::int64_t seconds;
        std::uint64_t largestBlock;
        double bytesPerSecond;
    } cases[] = {
        {"finished", movie, true, 2, 25, 23},
        {"unfinished", unfinished, false, 2, 25, 23},
        {"finished, then cut", variant(movie, size - 1), false, 1, 21, 21},
        {"finished, then extended", variant(movie, size + 2), true, 2, 25, 23},
        {"index entry to a block in the header", blockInTheHeader(), false, 1, 21, 21},
        {"billions of frames", variant(movie, size, golden::totalFrames, Bytes(4, 0xFF)), false, 2, 25, 23},
    };
    for (const auto& expected : cases) {
        const MovieFacts facts = factsOf(expected.bytes);
        EXPECT_EQ(facts.isFinished, expected.isFinished) << expected.what;
        EXPECT_EQ(facts.wholeSeconds, expected.seconds) << expected.what;
        EXPECT_EQ(facts.wholeFrames, expected.seconds * 2) << expected.what;
        EXPECT_EQ(facts.largestBlock, expected.largestBlock) << expected.what;
        EXPECT_EQ(facts.bytesPerSecond, expected.bytesPerSecond) << expected.what;
        EXPECT_EQ(facts.fileSize, expected.bytes.size()) << expected.what;
    }
}

}  // namespace
}  // namespace zeb
