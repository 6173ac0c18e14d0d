// A compressed block of any bytes and an expected length, against the literal expansion.

#include "codec/RLE2.h"
#include "format/BigEndian.h"
#include "fuzz/FuzzInput.h"
#include "tests/codec/ReferenceCodec.h"

using namespace zeb;

namespace {

/// More than any packets in a block of that size produce. A claim beyond it differs in nothing but memory.
std::size_t beyondReach(const fuzz::Bytes& block) {
    return block.size() * 129 * 4 + 1;
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto expected = static_cast<std::size_t>(input.number(4));
    fuzz::Bytes block = input.rest();
    const auto result = expandRLE2(block, expected);

    fuzz::Bytes kept(data, data + size);
    fuzz::require(expandRLE2(block, expected, kept) == result.has_value(), "both forms agree");
    fuzz::require(kept == result.value_or(fuzz::Bytes()), "a buffer's old contents do not matter");
    if (expected >= beyondReach(block)) {
        fuzz::require(!result, "what packets cannot fill fails");
        return 0;
    }
    // The reference allocates what the block claims.
    const std::size_t claim = std::max(beyondReach(block), expected);
    if (block.size() >= 8) {
        const auto length = std::span(block).subspan<4, 4>();
        bigEndian::store32(
            length, static_cast<std::uint32_t>(std::min<std::size_t>(bigEndian::load32(length), claim)));
    }
    fuzz::require(result == reference::expandRLE2(block, expected), "equals the literal expansion");
    return 0;
}
