// A frame record of any bytes, for file headers of any size, read in every order of bytes.

#include <limits>

#include "codec/FrameDecoder.h"
#include "fuzz/FuzzInput.h"

using namespace zeb;

namespace {

void check(FrameDecoder& decoder, const fuzz::Bytes& record, int width, int height) {
    const auto image = decoder.decodeFrame(record, width, height);
    const std::string line = decoder.lastDecodeDebug();
    fuzz::require(line.starts_with("payload=" + std::to_string(record.size()) + "B ["), "a line for each");
    fuzz::require(!line.ends_with(" | ok") || image, "no picture is called one");
    if (!image) {
        fuzz::require(line.ends_with(" | fallback: common-raw"), "every way was tried");
        return;
    }
    fuzz::require(image->width >= 1 && image->height >= 1, "a picture has sides");
    fuzz::require(image->pixels.size() == std::uint64_t{4} * static_cast<std::uint64_t>(image->width) *
                                              static_cast<std::uint64_t>(image->height),
                  "a picture has its pixels");
    FrameDecoder fresh;
    fresh.mode32Interpretation = decoder.mode32Interpretation;
    const auto again = fresh.decodeFrame(record, width, height);
    fuzz::require(again && again->pixels == image->pixels, "what was decoded before does not matter");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::FuzzInput input(data, size);
    static FrameDecoder decoder;  // its working memory comes from all inputs
    const auto width = static_cast<int>(static_cast<std::uint32_t>(input.number(4)));
    const auto height = static_cast<int>(static_cast<std::uint32_t>(input.number(4)));
    const fuzz::Bytes record = input.rest();
    for (const Mode32Interpretation interpretation : allMode32Interpretations) {
        decoder.mode32Interpretation = interpretation;
        check(decoder, record, width, height);
    }
    return 0;
}
