#include "platform/settings/OldPropertyList.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings/PropertyList.h"
#include "platform/text/UTF8.h"

namespace zeb::propertyList {
namespace {

constexpr char32_t end = 0xFFFFFFFF;  ///< no character; marks the end of the text

/// The upper half of the NeXTSTEP character set.
constexpr std::array<char16_t, 128> nextStepSet = {
    0x00A0, 0x00C0, 0x00C1, 0x00C2, 0x00C3, 0x00C4, 0x00C5, 0x00C7, 0x00C8, 0x00C9, 0x00CA, 0x00CB, 0x00CC,
    0x00CD, 0x00CE, 0x00CF, 0x00D0, 0x00D1, 0x00D2, 0x00D3, 0x00D4, 0x00D5, 0x00D6, 0x00D9, 0x00DA, 0x00DB,
    0x00DC, 0x00DD, 0x00DE, 0x00B5, 0x00D7, 0x00F7, 0x00A9, 0x00A1, 0x00A2, 0x00A3, 0x2044, 0x00A5, 0x0192,
    0x00A7, 0x00A4, 0x2019, 0x201C, 0x00AB, 0x2039, 0x203A, 0xFB01, 0xFB02, 0x00AE, 0x2013, 0x2020, 0x2021,
    0x00B7, 0x00A6, 0x00B6, 0x2022, 0x201A, 0x201E, 0x201D, 0x00BB, 0x2026, 0x2030, 0x00AC, 0x00BF, 0x00B9,
    0x02CB, 0x00B4, 0x02C6, 0x02DC, 0x00AF, 0x02D8, 0x02D9, 0x00A8, 0x00B2, 0x02DA, 0x00B8, 0x00B3, 0x02DD,
    0x02DB, 0x02C7, 0x2014, 0x00B1, 0x00BC, 0x00BD, 0x00BE, 0x00E0, 0x00E1, 0x00E2, 0x00E3, 0x00E4, 0x00E5,
    0x00E7, 0x00E8, 0x00E9, 0x00EA, 0x00EB, 0x00EC, 0x00C6, 0x00ED, 0x00AA, 0x00EE, 0x00EF, 0x00F0, 0x00F1,
    0x0141, 0x00D8, 0x0152, 0x00BA, 0x00F2, 0x00F3, 0x00F4, 0x00F5, 0x00F6, 0x00E6, 0x00F9, 0x00FA, 0x00FB,
    0x0131, 0x00FC, 0x00FD, 0x0142, 0x00F8, 0x0153, 0x00DF, 0x00FE, 0x00FF, 0xFFFD, 0xFFFD};

/// Converts a byte of the NeXTSTEP set. Three octal digits can exceed a byte; the highest bit is dropped.
char32_t fromNextStep(unsigned code) {
    const unsigned byte = code & 0xFF;
    return byte < 0x80 ? byte : nextStepSet.at(byte - 0x80);
}

/// Converts UTF-16 units to characters; a surrogate without its partner becomes U+FFFD.
std::u32string joinSurrogates(const std::u32string& units) {
    std::u32string characters;
    for (std::size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        const char32_t next = i + 1 < units.size() ? units[i + 1] : 0;
        if (unit >= 0xD800 && unit < 0xDC00 && next >= 0xDC00 && next < 0xE000) {
            characters.push_back(0x10000 + ((unit - 0xD800) << 10 | (next - 0xDC00)));
            ++i;
        } else {
            characters.push_back(unit >= 0xD800 && unit < 0xE000 ? replacementCharacter : unit);
        }
    }
    return characters;
}

std::u32string decode(std::span<const std::uint8_t> bytes) {
    const auto startsWith = [&](std::initializer_list<std::uint8_t> mark) {
        return bytes.size() >= mark.size() && std::equal(mark.begin(), mark.end(), bytes.begin());
    };
    const bool isLittle = startsWith({0xFF, 0xFE});
    if (isLittle || startsWith({0xFE, 0xFF})) {
        std::u32string units;
        for (std::size_t i = 2; i + 1 < bytes.size(); i += 2)
            units.push_back(static_cast<char32_t>(bytes[i + isLittle] << 8 | bytes[i + !isLittle]));
        return joinSurrogates(units);
    }
    if (startsWith({0xEF, 0xBB, 0xBF})) bytes = bytes.subspan(3);
    const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    std::u32string characters = decodeUTF8(text);
    const bool isUTF8 = text.find("\xEF\xBF\xBD") != std::string_view::npos ||
                        characters.find(replacementCharacter) == std::u32string::npos;
    if (!isUTF8) {
        characters.clear();
        for (const std::uint8_t byte : bytes)
            characters.push_back(fromNextStep(byte));
    }
    return characters;
}

std::optional<unsigned> digit(char32_t character, unsigned base) {
    unsigned value = base;
    if (character >= '0' && character <= '9') value = character - '0';
    if (character >= 'a' && character <= 'f') value = character - 'a' + 10;
    if (character >= 'A' && character <= 'F') value = character - 'A' + 10;
    if (value >= base) return std::nullopt;
    return value;
}

bool isSpace(char32_t character) {
    return character == ' ' || (character >= 0x9 && character <= 0xD) || character == 0x2028 ||
           character == 0x2029;
}

bool isBare(char32_t character) {
    static constexpr std::u32string_view others = U"$_.:/-";
    return (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
           (character >= 'A' && character <= 'Z') || others.find(character) != std::u32string_view::npos;
}

class Parser {
public:
    explicit Parser(std::u32string_view text) : m_rest(text) {}

    PropertyValue parse() {
        PropertyValue value = readValue(0);
        skipSpace();
        if (!m_rest.empty()) refuse();
        return value;
    }

private:
    [[noreturn]] static void refuse() { throw PropertyListError("not a property list"); }

    char32_t next() const { return m_rest.empty() ? end : m_rest.front(); }
    char32_t take() {
        const char32_t character = next();
        if (character == end) refuse();
        m_rest.remove_prefix(1);
        return character;
    }
    bool skip(std::u32string_view start) {
        if (!m_rest.starts_with(start)) return false;
        m_rest.remove_prefix(start.size());
        return true;
    }

    void skipSpace() {
        while (true) {
            if (isSpace(next())) {
                m_rest.remove_prefix(1);
            } else if (skip(U"//")) {
                m_rest.remove_prefix(std::min(m_rest.find_first_of(U"\n\r\u2028\u2029"), m_rest.size()));
            } else if (skip(U"/*")) {
                const std::size_t place = m_rest.find(U"*/");
                if (place == std::u32string_view::npos) refuse();
                m_rest.remove_prefix(place + 2);
            } else {
                return;
            }
        }
    }

    PropertyValue readValue(int depth) {
        if (depth > greatestDepth) throw PropertyListError("nested too deeply");
        if (++m_count > largestCount) throw PropertyListError("too many values");
        skipSpace();
        switch (next()) {
            case '{':
                return readDictionary(depth);
            case '(':
                return readArray(depth);
            case '<':
                return readData();
            default:
                return readText();
        }
    }

    PropertyValue readDictionary(int depth) {
        take();
        PropertyDictionary dictionary;
        for (skipSpace(); next() != '}'; skipSpace()) {
            std::string key = readText();
            skipSpace();
            PropertyValue value = skip(U"=") ? readValue(depth + 1) : PropertyValue(key);
            dictionary.insert_or_assign(std::move(key), std::move(value));
            skipSpace();
            if (next() != '}' && !skip(U";")) refuse();
        }
        take();
        return dictionary;
    }

    PropertyValue readArray(int depth) {
        take();
        PropertyArray array;
        for (skipSpace(); next() != ')'; skipSpace()) {
            array.push_back(readValue(depth + 1));
            skipSpace();
            if (next() != ')' && !skip(U",")) refuse();
        }
        take();
        return array;
    }

    PropertyValue readData() {
        take();
        PropertyData bytes;
        for (skipSpace(); next() != '>'; skipSpace()) {
            const auto high = digit(take(), 16);
            const auto low = digit(take(), 16);
            if (!high || !low) refuse();
            bytes.push_back(static_cast<std::uint8_t>(*high << 4 | *low));
        }
        take();
        return bytes;
    }

    std::string readText() {
        std::string text;
        if (next() == '"' || next() == '\'') {
            for (const char32_t character : joinSurrogates(readQuoted()))
                appendUTF8(text, character);
            return text;
        }
        while (isBare(next()))
            appendUTF8(text, take());
        if (text.empty()) refuse();
        return text;
    }

    std::u32string readQuoted() {
        const char32_t quote = take();
        std::u32string units;
        while (true) {
            const char32_t character = take();
            if (character == quote) return units;
            units.push_back(character == '\\' ? readEscape() : character);
        }
    }

    char32_t readEscape() {
        static constexpr std::u32string_view names = U"abfnrtv";
        static constexpr std::u32string_view controls = U"\a\b\f\n\r\t\v";
        if (digit(next(), 8)) return fromNextStep(readNumber(8, 3));
        const char32_t character = take();
        if (character == 'U' && digit(next(), 16)) return readNumber(16, 4);
        const std::size_t control = names.find(character);
        return control == std::u32string_view::npos ? character : controls[control];
    }

    unsigned readNumber(unsigned base, int digits) {
        unsigned number = 0;
        for (; digits > 0; --digits) {
            const auto value = digit(next(), base);
            if (!value) break;
            number = number * base + *value;
            take();
        }
        return number;
    }

    std::u32string_view m_rest;
    std::size_t m_count = 0;
};

}  // namespace

PropertyValue parseOld(std::span<const std::uint8_t> bytes) {
    if (bytes.size() > largestSize) throw PropertyListError("too large");
    const std::u32string text = decode(bytes);
    return Parser(text).parse();
}

}  // namespace zeb::propertyList
