#include "codec/RLE2.h"

#include <gtest/gtest.h>

#include <random>

#include "tests/codec/ReferenceCodec.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes block(char itemSize, std::uint32_t length, const Bytes& packets) {
    Bytes bytes{'R', 'L', 'E', static_cast<std::uint8_t>(itemSize)};
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::uint8_t>(length >> shift));
    bytes.insert(bytes.end(), packets.begin(), packets.end());
    return bytes;
}

/// Compares the packets with those of the plain loop, then expands them again.
void expectGoodPackets(const Bytes& raw, const std::string& name) {
    Bytes expected, packets;
    reference::compressRLE2(raw, expected);
    compressRLE2(raw, packets);
    ASSERT_TRUE(packets == expected) << name << ", " << raw.size() / 2 << " words";
    ASSERT_TRUE(expandRLE2(block('2', static_cast<std::uint32_t>(raw.size()), packets), raw.size()) == raw)
        << name << ", " << raw.size() / 2 << " words";
}

TEST(CompressRLE2, WritesExpectedPacketsForKnownRuns) {
    const std::pair<Bytes, Bytes> cases[] = {
        {{}, {}},
        {{1, 2}, {0x00, 1, 2}},
        {{1, 2, 1, 2, 1, 2, 3, 4, 5, 6, 7, 8, 7, 8}, {0xFE, 1, 2, 0x01, 3, 4, 5, 6, 0xFF, 7, 8}},
        {Bytes(258, 5), {0x81, 5, 5, 0x00, 5, 5}},
        // Items that differ in one byte only are not a run.
        {{1, 2, 1, 3, 4, 3}, {0x02, 1, 2, 1, 3, 4, 3}},
    };
    for (const auto& [raw, expected] : cases) {
        Bytes packets;
        compressRLE2(raw, packets);
        EXPECT_EQ(packets, expected);
    }
}

TEST(CompressRLE2, MatchesReferenceForRunsOfAnyLength) {
    std::mt19937 random(2);
    for (int round = 0; round < 4000; ++round) {
        // Runs and literals of random lengths: mostly short ones, or lengths near the longest packet.
        const std::size_t longest = round % 4 == 0 ? 400 : 1 + random() % 140;
        const std::size_t size = random() % (round % 10 == 0 ? 12000 : 300) * 2;
        Bytes raw;
        std::uint32_t word = 0;
        while (raw.size() < size) {
            const bool run = random() % 2 == 0;
            for (std::size_t n = 1 + random() % longest; n > 0; --n) {
                if (!run || n == 1) word += random() % 3 == 0 ? 256 : 1;
                raw.insert(raw.end(),
                           {static_cast<std::uint8_t>(word), static_cast<std::uint8_t>(word >> 8)});
            }
        }
        raw.resize(size);
        expectGoodPackets(raw, "round " + std::to_string(round));
    }
}

TEST(ExpandRLE2, ExpandsValidBlocksAndRejectsOthers) {
    const std::tuple<Bytes, std::size_t, std::optional<Bytes>> cases[] = {
        {block('1', 5, {0xFE, 1, 0x01, 2, 3}), 5, Bytes{1, 1, 1, 2, 3}},
        {block('2', 4, {0xFF, 1, 2}), 3, Bytes{1, 2, 1}},
        {block('4', 8, {0xFF, 1, 2, 3, 4}), 8, Bytes{1, 2, 3, 4, 1, 2, 3, 4}},
        {block('3', 2, {0x00, 1, 2}), 2, std::nullopt},
        {{'R', 'L', 'F', '2', 0, 0, 0, 2, 0x00, 1, 2}, 2, std::nullopt},
        {{'R', 'L', 'E', '2', 0, 0, 0}, 0, std::nullopt},
    };
    for (const auto& [source, size, expected] : cases) {
        EXPECT_EQ(expandRLE2(source, size), expected) << testing::PrintToString(source);
        Bytes used(3, 9);  // a block that cannot be expanded clears it
        EXPECT_EQ(expandRLE2(source, size, used), expected.has_value());
        EXPECT_EQ(used, expected.value_or(Bytes{}));
    }
}

// A literal packet may exceed the expected length, but not the length field of the block.
TEST(ExpandRLE2, ReadsAllBytesOfLengthField) {
    for (const std::uint32_t length : {1024U, 0x10400U, 0x1010400U}) {
        Bytes packets;
        for (std::uint32_t done = 0; done < length - 512; done += 512)
            packets.insert(packets.end(), {0x81, 1, 2, 3, 4});
        packets.insert(packets.end(), 1 + 512, 0x7F);
        EXPECT_TRUE(expandRLE2(block('4', length, packets), length - 8));
        EXPECT_FALSE(expandRLE2(block('4', length - 1, packets), length - 8));
    }
}

// Neither a huge length field nor an unreachable expected length may allocate memory.
TEST(ExpandRLE2, ImpossibleLengthsAllocateNothing) {
    const Bytes lying = block('2', 0xFFFFFFFF, {0x01, 1, 2, 3, 4});
    EXPECT_EQ(expandRLE2(lying, 4), (Bytes{1, 2, 3, 4}));

    Bytes expanded;
    EXPECT_FALSE(expandRLE2(lying, std::size_t{1} << 60, expanded));
    EXPECT_EQ(expanded.capacity(), 0U);
    EXPECT_FALSE(expandRLE2(block('4', 1U << 27, Bytes(100, 0x80)), std::size_t{1} << 27, expanded));
    EXPECT_EQ(expanded.capacity(), 0U);

    // The largest possible output of a block of this size is accepted.
    Bytes densest;
    for (int i = 0; i < 50; ++i)
        densest.insert(densest.end(), {0x80, 6, 7});
    EXPECT_EQ(expandRLE2(block('2', 50 * 258, densest), 50 * 258),
              reference::expandRLE2(block('2', 50 * 258, densest), 50 * 258));
}

TEST(ExpandRLE2, MatchesReferenceForRandomBlocks) {
    std::mt19937 random(3);
    int successes = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes packets(random() % (round % 10 == 0 ? 3000 : 60));
        for (std::uint8_t& byte : packets) {
            // Control bytes of short packets and of any packet.
            byte = static_cast<std::uint8_t>(
                round % 2 == 0 ? random() : (random() % 2 == 0 ? random() % 8 : 0xF8 + random() % 8));
        }
        const char itemSize = "124"[random() % 3];
        const std::size_t expected = random() % (8 * packets.size() + 20);
        const auto length = static_cast<std::uint32_t>(random() % (8 * packets.size() + 20));
        const Bytes source = block(itemSize, length, packets);
        const auto expanded = expandRLE2(source, expected);
        ASSERT_TRUE(expanded == reference::expandRLE2(source, expected)) << round;
        successes += expanded.has_value() ? 1 : 0;
    }
    EXPECT_GT(successes, 2000);
}

}  // namespace
}  // namespace zeb
