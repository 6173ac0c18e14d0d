#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// Run-length compression as SMSQ/E reads it.
///
/// A compressed block is the ASCII bytes "RLE", the item size in bytes as an ASCII digit ("1", "2" or "4"),
/// the expanded length in bytes (32 bits, big-endian) and the packets. A control byte c = 0 ... 127 stands
/// before c + 1 literal items, c = -1 ... -128 before one item that is repeated 1 - c times. Items are copied
/// as they stand, whatever the order of their bytes. Callable from any thread.
namespace zeb {

/// Appends the packets for `raw`, taken as 2-byte items, to `packets` (neither signature nor length).
///
/// `raw` holds an even number of bytes, one 16-bit pixel after the other in stored byte order; fewer than two
/// bytes give no packets. Two equal neighbours always become a repeat, and a literal ends before them; no
/// packet covers more than 128 items.
void compressRLE2(std::span<const std::uint8_t> raw, std::vector<std::uint8_t>& packets);

/// Expands a block of any item size: exactly `expectedLength` bytes, or nothing when the signature is not one
/// of the three or the packets produce fewer bytes.
///
/// Expansion goes on up to the larger of `expectedLength` and the block's own length, and is then cut: a
/// packet that would pass that limit ends it (a literal as a whole, a repeat at the last item that fits), as
/// does a packet that the block does not hold entirely. Memory is taken for `expectedLength` bytes at most,
/// and only if packets of the block's size could produce that many.
std::optional<std::vector<std::uint8_t>> expandRLE2(std::span<const std::uint8_t> block,
                                                    std::size_t expectedLength);

/// The same into a buffer that the caller keeps: true and `expanded` is the result, or false and it is empty.
bool expandRLE2(std::span<const std::uint8_t> block, std::size_t expectedLength,
                std::vector<std::uint8_t>& expanded);

}  // namespace zeb
