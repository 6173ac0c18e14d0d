#include "format/TitleText.h"

#include <algorithm>
#include <optional>

#include "format/Layout.h"

namespace zeb {
namespace {

/// Takes one character off the front of a text that is not empty; nothing unless it is well-formed UTF-8 (RFC
/// 3629: shortest form, no surrogates, nothing above U+10FFFF).
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

/// Nothing when a character has no place in Latin-1. `text` is valid UTF-8.
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
    // ASCII is UTF-8 as it stands.
    std::string text(bytes.begin(), bytes.end());
    return isUTF8(text) ? text : "ZEB";
}

}  // namespace zeb
