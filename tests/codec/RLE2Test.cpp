#include "codec/RLE2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "tests/codec/ReferenceCodec.h"

namespace zeb {
namespace {

using Bytes = std::vector<std::uint8_t>;

/// One word per letter: "AAB" is 0x41 0x61 twice, 0x42 0x62.
Bytes words(const std::string& letters) {
    Bytes bytes;
    for (const char letter : letters) {
        bytes.push_back(static_cast<std::uint8_t>(letter));
        bytes.push_back(static_cast<std::uint8_t>(letter + 0x20));
    }
    return bytes;
}

Bytes block(char itemSize, std::uint32_t length, const Bytes& packets) {
    Bytes bytes{'R', 'L', 'E', static_cast<std::uint8_t>(itemSize)};
    for (const int shift : {24, 16, 8, 0})
        bytes.push_back(static_cast<std::uint8_t>(length >> shift));
    bytes.insert(bytes.end(), packets.begin(), packets.end());
    return bytes;
}

Bytes joined(std::initializer_list<Bytes> parts) {
    Bytes bytes;
    for (const Bytes& part : parts)
        bytes.insert(bytes.end(), part.begin(), part.end());
    return bytes;
}

Bytes compressed(const Bytes& raw) {
    Bytes packets;
    compressRLE2(raw, packets);
    return packets;
}

/// Equal to the plain loop's packets, and back again.
void expectGoodPackets(const Bytes& raw, const std::string& name) {
    Bytes expected;
    reference::compressRLE2(raw, expected);
    const Bytes packets = compressed(raw);
    ASSERT_TRUE(packets == expected) << name << ", " << raw.size() / 2 << " words";
    ASSERT_TRUE(expandRLE2(block('2', static_cast<std::uint32_t>(raw.size()), packets), raw.size()) == raw)
        << name << ", " << raw.size() / 2 << " words";
}

TEST(CompressRLE2, WritesTheKnownPackets) {
    std::string distinct;
    for (int i = 0; i < 130; ++i)
        distinct.push_back(static_cast<char>(i));
    struct Case {
        Bytes raw;
        Bytes packets;
    };
    const Case cases[] = {
        {{}, {}},
        {words("A"), joined({{0x00}, words("A")})},
        {words("AAABCDD"), joined({{0xFE}, words("A"), {0x01}, words("BC"), {0xFF}, words("D")})},
        {words(std::string(129, 'A')), joined({{0x81}, words("A"), {0x00}, words("A")})},
        {words(distinct),
         joined({{0x7F}, words(distinct.substr(0, 128)), {0x01}, words(distinct.substr(128))})},
        // Neighbours that differ in one byte only are not equal.
        {{1, 2, 1, 3, 4, 3}, {0x02, 1, 2, 1, 3, 4, 3}},
    };
    for (const Case& testCase : cases)
        EXPECT_EQ(compressed(testCase.raw), testCase.packets);
}

TEST(CompressRLE2, EqualsPlainLoopForEveryLength) {
    for (std::size_t count = 0; count <= 300; ++count) {
        Bytes distinct(count * 2);
        for (std::size_t i = 0; i < count; ++i) {
            distinct[2 * i] = static_cast<std::uint8_t>(i);
            distinct[2 * i + 1] = static_cast<std::uint8_t>(i >> 8);
        }
        // Flat up to or from each place.
        for (std::size_t at = 0; at <= count; ++at) {
            const auto border = static_cast<std::ptrdiff_t>(2 * at);
            Bytes mixed = distinct;
            std::fill(mixed.begin() + border, mixed.end(), std::uint8_t{0xEE});
            expectGoodPackets(mixed, "run at the end");
            mixed = distinct;
            std::fill(mixed.begin(), mixed.begin() + border, std::uint8_t{0x5A});
            expectGoodPackets(mixed, "run at the start");
        }
    }
}

TEST(CompressRLE2, EqualsPlainLoopForRunsOfAnyLength) {
    std::mt19937 random(2);
    for (int round = 0; round < 400; ++round) {
        // Runs and literals of random lengths, now mostly short, now around the longest packets.
        const std::size_t longest = round % 4 == 0 ? 400 : 1 + random() % 140;
        const std::size_t size = 2 + random() % 12000 * 2;
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
        expectGoodPackets(raw, "runs");
    }
}

TEST(ExpandRLE2, KeepsToTheBlockAndTheCapacity) {
    struct Case {
        const char* name;
        Bytes source;
        std::size_t expected;
        std::optional<Bytes> result;
    };
    const Case cases[] = {
        {"repeat cut at the capacity", block('2', 4, {0x81, 1, 2}), 4, Bytes{1, 2, 1, 2}},
        {"too few bytes", block('2', 2, {0x00, 1, 2}), 4, std::nullopt},
        {"own length larger, cut", block('2', 6, {0x02, 1, 2, 3, 4, 5, 6}), 4, Bytes{1, 2, 3, 4}},
        {"literal beyond the capacity", block('2', 4, {0x02, 1, 2, 3, 4, 5, 6}), 4, std::nullopt},
        {"literal beyond the block, enough before", block('2', 8, {0x00, 1, 2, 0x01, 3}), 2, Bytes{1, 2}},
        {"repeat without its item", block('2', 4, {0xFF, 1}), 4, std::nullopt},
        {"the longest repeat", block('1', 129, {0x80, 7}), 129, Bytes(129, 7)},
        {"items of one byte", block('1', 5, {0xFE, 1, 0x01, 2, 3}), 5, Bytes{1, 1, 1, 2, 3}},
        {"items of four bytes", block('4', 8, {0xFF, 1, 2, 3, 4}), 8, Bytes{1, 2, 3, 4, 1, 2, 3, 4}},
        {"half an item cut", block('2', 4, {0xFF, 1, 2}), 3, Bytes{1, 2, 1}},
        {"nothing expected", block('2', 100, {}), 0, Bytes{}},
        {"unknown item size", block('3', 2, {0x00, 1, 2}), 2, std::nullopt},
        {"other signature", {'R', 'L', 'F', '2', 0, 0, 0, 2, 0x00, 1, 2}, 2, std::nullopt},
        {"seven bytes", {'R', 'L', 'E', '2', 0, 0, 0}, 0, std::nullopt},
    };
    for (const Case& testCase : cases) {
        EXPECT_EQ(expandRLE2(testCase.source, testCase.expected), testCase.result) << testCase.name;
    }
}

// Neither the block's length field nor a hopeless expectation may cost memory.
TEST(ExpandRLE2, TakesNoMemoryForPromises) {
    const Bytes lying = block('2', 0xFFFFFFFF, {0x01, 1, 2, 3, 4});
    EXPECT_EQ(expandRLE2(lying, 4), (Bytes{1, 2, 3, 4}));

    Bytes expanded;
    EXPECT_FALSE(expandRLE2(lying, std::size_t{1} << 60, expanded));
    EXPECT_EQ(expanded.capacity(), 0U);
    EXPECT_FALSE(expandRLE2(block('4', 1U << 27, Bytes(100, 0x80)), std::size_t{1} << 27, expanded));
    EXPECT_EQ(expanded.capacity(), 0U);

    // The most that a block of this size can give is not refused.
    Bytes densest;
    for (int i = 0; i < 50; ++i)
        densest.insert(densest.end(), {0x80, 6, 7});
    EXPECT_EQ(expandRLE2(block('2', 50 * 258, densest), 50 * 258),
              reference::expandRLE2(block('2', 50 * 258, densest), 50 * 258));
}

TEST(ExpandRLE2, EqualsPlainLoopForRandomBlocks) {
    std::mt19937 random(3);
    int successes = 0;
    for (int round = 0; round < 20000; ++round) {
        Bytes packets(random() % (round % 10 == 0 ? 3000 : 60));
        for (std::uint8_t& byte : packets) {
            // Short packets as well as any.
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
