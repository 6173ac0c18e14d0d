#include "codec/RLE2.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cassert>
#include <cstring>
#include <limits>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace zeb {

namespace {

constexpr std::size_t itemBytes = 2;
constexpr std::size_t longestPacket = 128;  ///< maximum number of items in a packet of the compressor

/// One bit per word of a sequence: set if the word equals its right neighbour. Computed in stretches. The bit
/// after the last word is set, so that a search for the next run always ends.
class EqualNeighbours {
public:
    explicit EqualNeighbours(std::span<const std::uint8_t> raw)
        : m_raw(raw.data()), m_count(raw.size() / itemBytes) {}

    /// Makes the bits of at least `lookAhead` words from `position` on available. True if earlier bits were
    /// dropped.
    bool advanceTo(std::size_t position) {
        if (position + lookAhead <= m_end) return false;
        refill(position);
        return true;
    }

    /// Returns the 64 bits from `position` on, the first bit lowest.
    std::uint64_t bits(std::size_t position) const {
        const std::size_t index = (position - m_start) / 64;
        const unsigned shift = (position - m_start) % 64;
        return (m_bits[index] >> shift) | ((m_bits[index + 1] << 1) << (63 - shift));
    }

private:
    /// Words of a literal and a run of maximum length, and of the last read of `bits` past them.
    static constexpr std::size_t lookAhead = 2 * longestPacket + 2 * 64;
    static constexpr std::size_t stretch = 64;  ///< entries of 64 bits

    void refill(std::size_t position) {
        m_start = position;
        m_end = position + stretch * 64;
        for (std::size_t index = 0; index < stretch; ++index)
            m_bits[index] = compare(position + index * 64);
    }

    std::uint64_t compare(std::size_t first) const {
        std::uint64_t equal = 0;
        std::size_t done = 0;
#ifdef __SSE2__
        if (first + 64 < m_count) {
            for (; done < 64; done += 16) {
                const std::uint8_t* words = m_raw + (first + done) * itemBytes;
                const auto at = [](const std::uint8_t* bytes) {
                    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
                };
                const __m128i low = _mm_cmpeq_epi16(at(words), at(words + 2));
                const __m128i high = _mm_cmpeq_epi16(at(words + 16), at(words + 18));
                const int mask = _mm_movemask_epi8(_mm_packs_epi16(low, high));
                equal |= static_cast<std::uint64_t>(static_cast<std::uint32_t>(mask)) << done;
            }
        }
#endif
        for (; done < 64 && first + done + 1 < m_count; ++done) {
            const std::uint8_t* word = m_raw + (first + done) * itemBytes;
            equal |= static_cast<std::uint64_t>(word[0] == word[2] && word[1] == word[3]) << done;
        }
        if (first <= m_count && m_count - first < 64) equal |= std::uint64_t{1} << (m_count - first);
        return equal;
    }

    const std::uint8_t* m_raw;
    std::size_t m_count;
    std::size_t m_start = 0;
    std::size_t m_end = 0;
    std::array<std::uint64_t, stretch + 1> m_bits{};  // one more: `bits` reads in pairs
};

/// A queue of the next bits of `EqualNeighbours`. A fetch does not depend on the last bits taken, so that the
/// processor can overlap both.
class Window {
public:
    void restart(std::size_t position) {
        m_bits = 0;
        m_valid = 0;
        m_next = position;
    }

    /// Makes 56 bits or more valid.
    void fill(const EqualNeighbours& equal) {
        m_bits |= equal.bits(m_next) << m_valid;
        const std::size_t bytes = (63 - m_valid) / 8;
        m_next += bytes * 8;
        m_valid += bytes * 8;
    }

    void drop(std::size_t count) {
        m_bits >>= count;
        m_valid -= count;
    }

    std::uint64_t bits() const { return m_bits; }
    std::size_t valid() const { return m_valid; }

private:
    std::uint64_t m_bits = 0;
    std::size_t m_valid = 0;  ///< at most 63
    std::size_t m_next = 0;   ///< position of the bit after the valid ones
};

/// Returns the number of literal words from `position` to the next run or the end.
std::size_t literalLength(const EqualNeighbours& equal, std::size_t position) {
    std::size_t length = 0;
    while (length < longestPacket) {
        const std::uint64_t bits = equal.bits(position + length);
        if (bits != 0)
            return std::min(longestPacket, length + static_cast<std::size_t>(std::countr_zero(bits)));
        length += 64;
    }
    return longestPacket;
}

/// Returns the length of the run at `position` in words; 1 if no run starts there.
std::size_t runLength(const EqualNeighbours& equal, std::size_t position) {
    std::size_t neighbours = 0;
    while (neighbours < longestPacket) {
        const auto ones = static_cast<std::size_t>(std::countr_one(equal.bits(position + neighbours)));
        neighbours += ones;
        if (ones < 64) break;
    }
    return std::min(longestPacket, neighbours + 1);
}

/// Slack for copies in whole blocks: the last block may pass the end of the data.
constexpr std::size_t copyBlock = 32;

/// Copies `count` bytes in whole blocks, at least one block: reads and writes up to `copyBlock` - 1 bytes
/// more. A copy of fixed size is a few instructions, and the loop, which mostly ends after one block, is
/// predicted well.
inline void copyBlocks(std::uint8_t* to, const std::uint8_t* from, std::size_t count) {
    std::memcpy(to, from, copyBlock);
    for (std::size_t done = copyBlock; done < count; done += copyBlock) {
        std::memcpy(to + done, from + done, copyBlock);
    }
}

}  // namespace

void compressRLE2(std::span<const std::uint8_t> raw, std::vector<std::uint8_t>& packets) {
    assert(raw.size() % itemBytes == 0);
    const std::size_t count = raw.size() / itemBytes;
    EqualNeighbours equal(raw);

    // Packets are collected here and appended in bulk, so that the vector rarely grows and is filled once.
    constexpr std::size_t longestPair = 2 + longestPacket * itemBytes + 1 + itemBytes;
    std::array<std::uint8_t, 8192> gathered;
    std::size_t out = 0;

    Window window;
    std::size_t position = 0;
    while (position < count) {
        if (equal.advanceTo(position)) window.restart(position);
        if (out + longestPair + copyBlock > gathered.size()) {
            packets.insert(packets.end(), gathered.begin(),
                           gathered.begin() + static_cast<std::ptrdiff_t>(out));
            out = 0;
        }
        // A literal, possibly empty, and then the run that ends it. In natural pictures a branch on an empty
        // literal is mispredicted often, so an empty literal is written too and overwritten.
        window.fill(equal);
        auto literal = static_cast<std::size_t>(std::countr_zero(window.bits()));
        std::size_t run = 1 + static_cast<std::size_t>(std::countr_one(window.bits() >> (literal % 64)));
        if (literal + run <= window.valid()) [[likely]] {
            window.drop(literal + run);
        } else {
            literal = literalLength(equal, position);
            run = runLength(equal, position + literal);
            if (run == 1) run = 0;  // after a literal of maximum length
            window.restart(position + literal + run);
        }

        const std::uint8_t* words = raw.data() + position * itemBytes;
        gathered[out] = static_cast<std::uint8_t>(literal - 1);
        if ((count - position) * itemBytes >= longestPacket * itemBytes + copyBlock) {
            copyBlocks(&gathered[out + 1], words, literal * itemBytes);
        } else {
            std::memcpy(&gathered[out + 1], words, literal * itemBytes);
        }
        out += (1 + literal * itemBytes) & -static_cast<std::size_t>(literal > 0);
        position += literal;
        if (position == count) break;

        const std::uint8_t* word = raw.data() + position * itemBytes;
        gathered[out] = static_cast<std::uint8_t>(257 - run);
        gathered[out + 1] = word[0];
        gathered[out + 2] = word[1];
        out += run > 0 ? 3 : 0;
        position += run;
    }
    packets.insert(packets.end(), gathered.begin(), gathered.begin() + static_cast<std::ptrdiff_t>(out));
}

namespace {

constexpr std::size_t headerBytes = 8;
constexpr std::size_t longestRepeat = 129;

std::uint64_t bigEndian32(const std::uint8_t* bytes) {
    return (std::uint64_t{bytes[0]} << 24) | (std::uint64_t{bytes[1]} << 16) |
           (std::uint64_t{bytes[2]} << 8) | bytes[3];
}

/// Expands while `output` has room for packets of maximum length and `packets` holds them entirely.
///
/// A literal is nearly always followed by a repeat; a repeat is followed by either. Each round therefore
/// takes a literal, possibly empty, and a repeat. The kind of packet is handled by arithmetic, because a
/// branch on it would be mispredicted half the time.
template <typename Item>
void expandWithoutChecks(std::span<const std::uint8_t> packets, std::span<std::uint8_t> output,
                         std::size_t& in, std::size_t& out) {
    constexpr std::size_t size = sizeof(Item);
    constexpr std::size_t roomIn = 1 + longestPacket * size + 1 + size + copyBlock;
    constexpr std::size_t roomOut = longestPacket * size + longestRepeat * size + copyBlock;
    if (packets.size() < roomIn || output.size() < roomOut) return;
    const std::uint8_t* from = packets.data() + in;
    const std::uint8_t* const lastFrom = packets.data() + packets.size() - roomIn;
    std::uint8_t* to = output.data() + out;
    std::uint8_t* const lastTo = output.data() + output.size() - roomOut;

    while (from <= lastFrom && to <= lastTo) {
        const auto first = static_cast<std::int64_t>(static_cast<std::int8_t>(*from));
        const std::int64_t isLiteral = ~(first >> 63);  // all bits or none
        const auto literalBytes = static_cast<std::size_t>((first + 1) & isLiteral) * size;
        copyBlocks(to, from + 1, literalBytes);
        from += literalBytes + static_cast<std::size_t>(isLiteral & 1);
        to += literalBytes;

        const std::size_t control = *from;
        if (control < 0x80) [[unlikely]]
            continue;
        const std::size_t repeatBytes = (257 - control) * size;
        Item item;
        std::memcpy(&item, from + 1, size);
        // All ones divided by the largest item value is 1 in the lowest bit of each item.
        std::array<std::uint64_t, copyBlock / 8> block;
        block.fill(item * (std::numeric_limits<std::uint64_t>::max() / std::numeric_limits<Item>::max()));
        for (std::size_t done = 0; done < repeatBytes; done += copyBlock) {
            std::memcpy(to + done, block.data(), copyBlock);
        }
        from += 1 + size;
        to += repeatBytes;
    }
    in = static_cast<std::size_t>(from - packets.data());
    out = static_cast<std::size_t>(to - output.data());
}

/// Expands `packets` up to `capacity` bytes and stores the first ones in `output`; the rest is only counted.
template <typename Item>
bool expandItems(std::span<const std::uint8_t> packets, std::span<std::uint8_t> output,
                 std::uint64_t capacity) {
    constexpr std::size_t size = sizeof(Item);
    std::size_t in = 0;
    std::size_t out = 0;
    expandWithoutChecks<Item>(packets, output, in, out);
    while (out < output.size() && in < packets.size()) {
        const std::size_t control = packets[in++];
        if (control < 0x80) {
            const std::size_t bytes = (control + 1) * size;
            if (bytes > packets.size() - in || bytes > capacity - out) break;
            std::memcpy(&output[out], &packets[in], std::min(bytes, output.size() - out));
            in += bytes;
            out += bytes;
        } else {
            if (size > packets.size() - in) break;
            for (std::size_t n = 257 - control; n > 0 && out < output.size() && size <= capacity - out; --n) {
                std::memcpy(&output[out], &packets[in], std::min(size, output.size() - out));
                out += size;
            }
            in += size;
        }
    }
    return out >= output.size();
}

}  // namespace

bool expandRLE2(std::span<const std::uint8_t> block, std::size_t expectedLength,
                std::vector<std::uint8_t>& expanded) {
    const auto fail = [&] {
        expanded.clear();
        return false;
    };
    if (block.size() < headerBytes || std::memcmp(block.data(), "RLE", 3) != 0) return fail();
    if (block[3] != '1' && block[3] != '2' && block[3] != '4') return fail();
    const std::size_t size = block[3] - std::size_t{'0'};
    const auto packets = block.subspan(headerBytes);

    // A repeat packet expands most. Reject before allocating if even repeats could not fill `expectedLength`.
    const std::size_t mostPackets = packets.size() / (1 + size) + 1;
    if (expectedLength / (longestRepeat * size) > mostPackets) return fail();

    const std::uint64_t capacity = std::max<std::uint64_t>(expectedLength, bigEndian32(&block[4]));
    expanded.resize(expectedLength);
    const bool complete = size == 1   ? expandItems<std::uint8_t>(packets, expanded, capacity)
                          : size == 2 ? expandItems<std::uint16_t>(packets, expanded, capacity)
                                      : expandItems<std::uint32_t>(packets, expanded, capacity);
    return complete || fail();
}

std::optional<std::vector<std::uint8_t>> expandRLE2(std::span<const std::uint8_t> block,
                                                    std::size_t expectedLength) {
    std::vector<std::uint8_t> expanded;
    if (!expandRLE2(block, expectedLength, expanded)) return std::nullopt;
    return expanded;
}

}  // namespace zeb
