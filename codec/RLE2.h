#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Run-length compression in the form that SMSQ/E reads.
///
/// A compressed block is the ASCII bytes "RLE", the item size in bytes as an ASCII digit ("1", "2" or "4"),
/// the expanded length in bytes (32 bits, big-endian) and the packets. A packet is a control byte c and
/// items: c = 0 ... 127 is followed by c + 1 literal items, c = -1 ... -128 by one item that is repeated 1 -
/// c times. The bytes of an item are copied unchanged. Callable from any thread.
namespace zeb {

/// Appends the packets for `raw`, taken as 2-byte items, to `packets` (neither signature nor length).
///
/// `raw` holds an even number of bytes: 16-bit pixels in stored byte order. Fewer than two bytes give no
/// packets. Two equal neighbours always become a repeat packet, and a literal packet ends before them. A
/// packet covers at most 128 items.
void compressRLE2(std::span<const std::uint8_t> raw, std::vector<std::uint8_t>& packets);

/// Expands a block of any item size. Returns exactly `expectedLength` bytes, or nothing if the signature is
/// unknown or the packets produce fewer bytes.
///
/// Packets are read until the larger of `expectedLength` and the block's length field is reached; the result
/// is the first `expectedLength` bytes. A literal that would pass this limit is not copied, a repeat is cut
/// at the last item that fits, and a packet that the block does not hold entirely ends the expansion. Memory
/// is limited to `expectedLength` bytes, and is allocated only if packets of the block's size could produce
/// that many.
std::optional<std::vector<std::uint8_t>> expandRLE2(std::span<const std::uint8_t> block,
                                                    std::size_t expectedLength);

/// Expands into the caller's buffer. Returns true with the result in `expanded`, or false with `expanded`
/// empty.
bool expandRLE2(std::span<const std::uint8_t> block, std::size_t expectedLength,
                std::vector<std::uint8_t>& expanded);

}  // namespace zeb
