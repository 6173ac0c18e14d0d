// A frame record of any bytes, for file headers of any size, read in every order of bytes, against the
// literal decoding.

#include "codec/FrameDecoder.h"
#include "fuzz/FuzzInput.h"
#include "tests/codec/ReferenceDecoder.h"

using namespace zeb;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    static FrameDecoder decoder;  // its working memory comes from all inputs
    decoder.mode32Interpretation = allMode32Interpretations[input.number(1) % 4];
    const auto width = static_cast<int>(static_cast<std::uint32_t>(input.number(4)));
    const auto height = static_cast<int>(static_cast<std::uint32_t>(input.number(4)));
    const fuzz::Bytes record = input.rest();

    const auto image = decoder.decodeFrame(record, width, height);
    const std::string line = decoder.lastDecodeDebug();
    fuzz::require(line.starts_with("payload=" + std::to_string(record.size()) + "B ["), "a line for each");
    fuzz::require(image || line.ends_with(" | fallback: common-raw"), "every way was tried");
    const auto expected = reference::Decoder(record, decoder.mode32Interpretation).decodeFrame(width, height);
    fuzz::require(image.has_value() == expected.has_value(), "a picture where the literal decoding has one");
    if (!image) return 0;
    fuzz::require(image->width == expected->width && image->height == expected->height, "of its size");
    fuzz::require(image->pixels == expected->pixels, "of its pixels");
    return 0;
}
