// Decodes a frame record of any bytes, for file headers of any size, in every pixel layout.

#include "codec/FrameDecoder.h"
#include "fuzz/FuzzInput.h"

using namespace zeb;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    static FrameDecoder decoder;  // keeps its working memory across inputs
    decoder.mode32Interpretation = allMode32Interpretations[input.number(1) % 4];
    const auto width = static_cast<int>(static_cast<std::uint32_t>(input.number(4)));
    const auto height = static_cast<int>(static_cast<std::uint32_t>(input.number(4)));
    const fuzz::Bytes record = input.rest();

    const auto image = decoder.decodeFrame(record, width, height);
    const std::string line = decoder.lastDecodeDebug();
    fuzz::require(line.starts_with("payload=" + std::to_string(record.size()) + "B ["), "a line for each");
    fuzz::require(image || line.ends_with(" | fallback: common-raw"), "every way was tried");
    FrameDecoder fresh;
    fresh.mode32Interpretation = decoder.mode32Interpretation;
    const auto again = fresh.decodeFrame(record, width, height);
    fuzz::require(fresh.lastDecodeDebug() == line, "earlier records leave no trace");
    fuzz::require(image.has_value() == again.has_value(), "nor do they help");
    if (!image) return 0;
    const auto pixels = static_cast<std::size_t>(image->width) * static_cast<std::size_t>(image->height);
    fuzz::require(image->width >= 1 && image->height >= 1, "a picture has sides");
    fuzz::require(image->pixels.size() == 4 * pixels, "and all its pixels");
    fuzz::require(image->pixels == again->pixels, "which are the same again");
    return 0;
}
