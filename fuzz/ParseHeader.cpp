// Parses headers and titles: all functions that read a header agree, and titles are always UTF-8.

#include <tuple>

#include "format/Layout.h"
#include "format/ZEBHeader.h"
#include "format/ZEBReader.h"
#include "fuzz/FuzzInput.h"
#include "tests/format/MemoryFile.h"

using namespace zeb;

namespace {

auto fieldsOf(const ZEBHeader& header) {
    return std::tie(header.title, header.width, header.height, header.fps, header.mode, header.frameCount,
                    header.blockSize, header.sampleRate, header.audioChannels, header.options);
}

void checkTitle(const std::string& title) {
    const fuzz::Bytes utf8(title.begin(), title.end());
    fuzz::require(decodeTitle(utf8) == title, "a title is UTF-8");
    const fuzz::Bytes stored = encodeTitle(title);
    fuzz::require(stored.size() <= layout::maxTitleLength, "a stored title fits");
    if (stored == utf8) fuzz::require(decodeTitle(stored) == title, "comes back");
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::Bytes file(data, data + size);
    checkTitle(decodeTitle(file));
    encodeTitle({reinterpret_cast<const char*>(data), size});

    fuzz::FuzzInput input(data, size);
    input.bytes(8);
    const fuzz::Bytes body = input.rest();
    ZEBHeader parsed;
    const bool isHeader = test::failure([&] { parsed = parseHeader(body); }).empty();
    if (isHeader) checkTitle(parsed.title);

    test::MemoryReadableFile source(file);
    ZEBReader reader([&] { return std::make_unique<test::MemoryReadableFile>(file); });
    LocatedHeader located;
    ZEBHeader read;
    const bool isLocated = test::failure([&] { located = readHeader(source); }).empty();
    const bool isRead = test::failure([&] { read = reader.readHeader(); }).empty();
    fuzz::require(isLocated == isRead, "both ways accept the same files");
    if (!isRead) return 0;
    fuzz::require(isHeader, "a header is a header without its file");
    fuzz::require(fieldsOf(located.header) == fieldsOf(read), "both ways read the same fields");
    const HeaderPlaces& places = located.places;
    fuzz::require(places.frameIndexCount == read.indexOffsets.size(), "and as many index entries");
    fuzz::require(places.frameIndex + 4 * places.frameIndexCount <= places.data && places.data <= size,
                  "the header lies in the file");
    return 0;
}
