#include "format/walk/FileCursor.h"

#include <gtest/gtest.h>

#include "tests/format/MemoryFile.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t piece = 4096;  // size of the read-ahead buffer

TEST(FileCursor, ReadsAcrossBufferBoundaries) {
    Bytes bytes(3 * piece);
    for (std::size_t place = 0; place < bytes.size(); ++place)
        bytes[place] = static_cast<std::uint8_t>(place * 7 + place / 251);
    test::MemoryReadableFile file(bytes);
    // Pairs of reads. The second one starts inside, at the end of or after the piece that the first one
    // loaded.
    for (const std::size_t first : {std::size_t{1}, piece - 1, piece, piece + 1}) {
        for (const std::size_t skipped : {std::size_t{0}, std::size_t{5}, piece - 1, piece}) {
            for (const std::size_t second : {std::size_t{4}, piece - 1, piece, 2 * piece, 3 * piece}) {
                FileCursor cursor(file);
                Bytes read(first);
                EXPECT_EQ(cursor.read(read), first);
                EXPECT_TRUE(cursor.skip(skipped));
                const std::size_t place = first + skipped, count = std::min(second, bytes.size() - place);
                EXPECT_EQ(cursor.position(), place);
                read.assign(second, 0);
                ASSERT_EQ(cursor.read(read), count) << first << " " << skipped << " " << second;
                EXPECT_EQ(cursor.position(), place + count);
                read.resize(count);
                EXPECT_EQ(read, Bytes(bytes.begin() + static_cast<std::ptrdiff_t>(place),
                                      bytes.begin() + static_cast<std::ptrdiff_t>(place + count)));
                EXPECT_EQ(cursor.remaining(), bytes.size() - place - count);
            }
        }
    }
}

TEST(FileCursor, SkipsWordsOfZeros) {
    const struct {
        std::size_t start, other, end, expected;  // `other` is the offset of the byte that is not 0
    } cases[] = {
        {0, 0, 40, 0},      {0, 3, 40, 0},           {0, 4, 40, 4},         {0, 39, 40, 36},
        {0, 40, 40, 40},    {2, 9, 40, 6},           {2, 10, 40, 10},       {0, 99, 100, 96},
        {0, 100, 200, 100}, {0, piece, 9999, piece}, {0, 9001, 9999, 9000}, {piece + 3, 9002, 9999, 8999},
        {0, 0, 0, 0},
    };
    for (const auto& [start, other, end, expected] : cases) {
        Bytes bytes(10000);
        bytes[other] = 2;
        test::MemoryReadableFile file(bytes);
        FileCursor cursor(file);
        cursor.seek(start);
        cursor.skipZeroWords(end);
        EXPECT_EQ(cursor.position(), expected) << start << " " << other << " " << end;
    }
    const Bytes zeros(10);
    test::MemoryReadableFile file(zeros);
    FileCursor cursor(file);
    cursor.skipZeroWords(100);
    EXPECT_EQ(cursor.position(), 10U);
}

}  // namespace
}  // namespace zeb
