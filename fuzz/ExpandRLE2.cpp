// Expands a block of any bytes to an expected length and compares with a literal expansion.

#include "codec/RLE2.h"
#include "fuzz/FuzzInput.h"
#include "tests/codec/ReferenceCodec.h"

using namespace zeb;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    const auto expected = static_cast<std::size_t>(input.number(4));
    const fuzz::Bytes block = input.rest();
    const auto result = expandRLE2(block, expected);

    fuzz::Bytes kept(data, data + size);
    fuzz::require(expandRLE2(block, expected, kept) == result.has_value(), "both forms agree");
    fuzz::require(kept == result.value_or(fuzz::Bytes()), "a buffer's old contents do not matter");
    fuzz::require(result == reference::expandRLE2(block, expected), "equals the literal expansion");
    return 0;
}
