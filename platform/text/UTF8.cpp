#include "platform/text/UTF8.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zeb {
namespace {

struct Decoded {
    char32_t character = replacementCharacter;
    std::size_t length = 1;
};

/// Decodes the first character of `text`, which is not empty.
Decoded decodeFirst(std::string_view text) {
    const auto byteAt = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
    const unsigned char lead = byteAt(0);
    if (lead < 0x80) return {lead, 1};
    if (lead < 0xC2 || lead > 0xF4) return {};
    const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    // The second byte's range excludes overlong forms, surrogates and values above U+10FFFF.
    unsigned char lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
    unsigned char highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
    char32_t character = lead & (0x7Fu >> length);
    for (std::size_t i = 1; i < length; ++i) {
        if (i >= text.size() || byteAt(i) < lowest || byteAt(i) > highest) return {replacementCharacter, i};
        character = character << 6 | (byteAt(i) & 0x3Fu);
        lowest = 0x80;
        highest = 0xBF;
    }
    return {character, length};
}

}  // namespace

std::u32string decodeUTF8(std::string_view text) {
    std::u32string characters;
    while (!text.empty()) {
        const Decoded first = decodeFirst(text);
        characters.push_back(first.character);
        text.remove_prefix(first.length);
    }
    return characters;
}

void appendUTF8(std::string& text, char32_t character) {
    if (character > 0x10FFFF || (character >= 0xD800 && character < 0xE000)) character = replacementCharacter;
    const auto append = [&](char32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) return append(character);
    if (character < 0x800) {
        append(0xC0 | character >> 6);
    } else if (character < 0x10000) {
        append(0xE0 | character >> 12);
        append(0x80 | (character >> 6 & 0x3F));
    } else {
        append(0xF0 | character >> 18);
        append(0x80 | (character >> 12 & 0x3F));
        append(0x80 | (character >> 6 & 0x3F));
    }
    append(0x80 | (character & 0x3F));
}

std::string repairedUTF8(std::string text) {
    const auto isASCII = [](char byte) { return static_cast<unsigned char>(byte) < 0x80; };
    if (std::ranges::all_of(text, isASCII)) return text;
    std::string repaired;
    for (const char32_t character : decodeUTF8(text))
        appendUTF8(repaired, character);
    return repaired;
}

namespace {

// The characters with the property White_Space, in UTF-8 (Unicode 15, PropList.txt), and the zero width
// space, which text frameworks treat as white space.
constexpr std::array<std::string_view, 26> whiteSpace = {
    " ",      "\t",     "\n",     "\v",     "\f",     "\r",     "\u0085", "\u00a0", "\u1680",
    "\u2000", "\u2001", "\u2002", "\u2003", "\u2004", "\u2005", "\u2006", "\u2007", "\u2008",
    "\u2009", "\u200a", "\u200b", "\u2028", "\u2029", "\u202f", "\u205f", "\u3000"};

template <typename HasAtEnd>
std::size_t lengthAtEnd(HasAtEnd hasAtEnd) {
    const auto* found = std::find_if(whiteSpace.begin(), whiteSpace.end(), hasAtEnd);
    return found == whiteSpace.end() ? 0 : found->size();
}

}  // namespace

std::string_view trimmed(std::string_view text) {
    while (const auto length =
               lengthAtEnd([text](std::string_view blank) { return text.starts_with(blank); }))
        text.remove_prefix(length);
    while (const auto length = lengthAtEnd([text](std::string_view blank) { return text.ends_with(blank); }))
        text.remove_suffix(length);
    return text;
}

}  // namespace zeb
