// Compresses pixels, compares with a literal compressor, and expands them to the original.

#include "codec/RLE2.h"
#include "format/BigEndian.h"
#include "fuzz/FuzzInput.h"
#include "tests/codec/ReferenceCodec.h"

using namespace zeb;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    // Repeat the input, because fuzzers rarely write inputs long enough for some boundaries.
    const std::uint64_t repetitions = 1 + input.number(1) % 16;
    const fuzz::Bytes piece = input.rest();
    fuzz::Bytes raw;
    for (std::uint64_t i = 0; i < repetitions; ++i)
        raw.insert(raw.end(), piece.begin(), piece.end());
    raw.resize(raw.size() / 2 * 2);
    raw.shrink_to_fit();

    fuzz::Bytes block = {'R', 'L', 'E', '2'};
    bigEndian::append32(block, static_cast<std::uint32_t>(raw.size()));
    fuzz::Bytes expected = block;
    compressRLE2(raw, block);
    reference::compressRLE2(raw, expected);
    fuzz::require(block == expected, "equals the literal compression");
    fuzz::require(expandRLE2(block, raw.size()) == raw, "comes back");
    return 0;
}
