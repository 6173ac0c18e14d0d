#include "format/ZEBHeader.h"

#include <algorithm>
#include <array>
#include <optional>

#include "format/ByteReader.h"
#include "format/Layout.h"
#include "format/TitleText.h"
#include "format/ZEBFormatError.h"

namespace zeb {
namespace {

template <typename Value>
Value need(std::optional<Value> value) {
    if (!value) throw ZEBFormatError::headerTooShort();
    return *value;
}

/// Everything before the index; leaves `body` at the first entry.
ZEBHeader parseFields(ByteReader& body) {
    const auto titleBytes = body.take(need(body.read16()));
    if (!titleBytes) throw ZEBFormatError::titleOutsideHeader();
    // The pad byte. Where it is missing, so are the fields, and they tell.
    if (body.position() % 2 != 0) body.take(1);

    ZEBHeader header;
    header.title = decodeTitle(*titleBytes);
    const std::uint32_t size = need(body.read32());
    header.width = std::max<int>(size >> 16, 1);
    header.height = std::max<int>(size & 0xFFFF, 1);
    header.fps = std::max<int>(need(body.read16()), 1);
    header.mode = need(body.read16());
    header.frameCount = need(body.read32());
    header.blockSize = need(body.read32());
    header.sampleRate = need(body.read16());
    header.audioChannels = need(body.read16());
    header.options = need(body.read16());
    need(body.read16());  // reserved
    return header;
}

}  // namespace

ZEBHeader parseHeader(std::span<const std::uint8_t> body) {
    ByteReader reader(body);
    ZEBHeader header = parseFields(reader);
    header.indexOffsets.reserve(reader.remaining() / layout::wordSize);
    while (const auto offset = reader.read32())
        header.indexOffsets.push_back(*offset);
    return header;
}

LocatedHeader readHeader(ReadableFile& file) {
    std::array<std::uint8_t, layout::headerBody> start{};
    const std::size_t startLength = file.readAt(0, start);
    if (startLength < layout::magic.size()) throw ZEBFormatError::unexpectedEnd();
    if (!std::equal(layout::magic.begin(), layout::magic.end(), start.begin()))
        throw ZEBFormatError::notAMovie();
    if (startLength < start.size()) throw ZEBFormatError::unexpectedEnd();

    const std::uint64_t bodySize = bigEndian::load32(std::span(start).last<4>());
    if (bodySize > file.size() - std::min(file.size(), layout::headerBody))
        throw ZEBFormatError::unexpectedEnd();

    // The longest title, its pad byte and the fields: nothing before the index lies beyond.
    constexpr std::size_t longest =
        layout::titleLengthSize + layout::maxTitleLength + 1 + layout::fixedFieldsSize;
    std::vector<std::uint8_t> body(std::min<std::uint64_t>(bodySize, longest));
    if (file.readAt(layout::headerBody, body) < body.size()) throw ZEBFormatError::unexpectedEnd();

    ByteReader reader(body);
    LocatedHeader located;
    located.header = parseFields(reader);
    const std::uint64_t index = layout::headerBody + reader.position();
    const std::uint64_t fields = index - layout::fixedFieldsSize;
    located.places.totalFrames = fields + layout::totalFrames;
    located.places.maxSecondBlockSize = fields + layout::maxSecondBlockSize;
    located.places.frameIndex = index;
    located.places.data = layout::headerBody + bodySize;
    located.places.frameIndexCount = (located.places.data - index) / layout::wordSize;
    return located;
}

}  // namespace zeb
