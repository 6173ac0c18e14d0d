#include "format/ZEBHeader.h"

#include <algorithm>
#include <array>
#include <optional>

#include "format/ByteReader.h"
#include "format/Layout.h"
#include "format/ZEBErrors.h"

namespace zeb {
namespace {

/// Removes the first character of a text that is not empty and returns it. Returns nothing unless it is
/// well-formed UTF-8 (RFC 3629: shortest form, no surrogates, at most U+10FFFF).
std::optional<char32_t> takeCharacter(std::string_view& text) {
    const auto byteAt = [&](std::size_t index) { return static_cast<std::uint8_t>(text[index]); };
    const std::uint8_t lead = byteAt(0);
    const std::size_t length = lead < 0x80       ? 1
                               : lead >> 5 == 6  ? 2
                               : lead >> 4 == 14 ? 3
                               : lead >> 3 == 30 ? 4
                                                 : 0;
    if (length == 0 || length > text.size()) return std::nullopt;

    char32_t character = length == 1 ? lead : lead & (0x7Fu >> length);
    for (std::size_t index = 1; index < length; ++index) {
        if (byteAt(index) >> 6 != 2) return std::nullopt;
        character = character << 6 | (byteAt(index) & 0x3Fu);
    }
    constexpr char32_t smallest[] = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = character >= 0xD800 && character <= 0xDFFF;
    if (character < smallest[length] || isSurrogate || character > 0x10FFFF) return std::nullopt;
    text.remove_prefix(length);
    return character;
}

bool isUTF8(std::string_view text) {
    while (!text.empty())
        if (!takeCharacter(text)) return false;
    return true;
}

/// Returns nothing if a character is not in Latin-1. `text` is valid UTF-8.
std::optional<std::vector<std::uint8_t>> latin1From(std::string_view text) {
    std::vector<std::uint8_t> bytes;
    while (!text.empty()) {
        const char32_t character = takeCharacter(text).value();
        if (character > 0xFF) return std::nullopt;
        bytes.push_back(static_cast<std::uint8_t>(character));
    }
    return bytes;
}

}  // namespace

std::vector<std::uint8_t> encodeTitle(std::string_view title) {
    if (!isUTF8(title)) return {};
    auto bytes = latin1From(title).value_or(std::vector<std::uint8_t>(title.begin(), title.end()));
    bytes.resize(std::min(bytes.size(), layout::maxTitleLength));
    return bytes;
}

std::string decodeTitle(std::span<const std::uint8_t> bytes) {
    // ASCII is also valid UTF-8.
    std::string text(bytes.begin(), bytes.end());
    return isUTF8(text) ? text : "ZEB";
}

namespace {

template <typename Value>
Value need(std::optional<Value> value) {
    if (!value) throw ZEBFormatError::headerTooShort();
    return *value;
}

/// Parses all fields before the index; leaves `body` at the first index entry.
ZEBHeader parseFields(ByteReader& body) {
    const auto titleBytes = body.take(need(body.read16()));
    if (!titleBytes) throw ZEBFormatError::titleOutsideHeader();
    // Skip the pad byte. If it is missing, the fields are missing too and raise the error.
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

    // The longest title, its pad byte and the fields: everything before the index.
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
