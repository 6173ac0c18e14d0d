#include "cli/Text.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

namespace zeb::cli {
namespace {

struct CodePoint {
    char32_t value;
    std::size_t length;  // in bytes; 0 if the bytes are not UTF-8
};

// Returns the first code point of `text`, which is not empty.
CodePoint firstCodePoint(std::string_view text) {
    const auto byte = [&](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byte(0);
    if (lead < 0x80) return {lead, 1};
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return {0, 0};
    char32_t value = lead & (0xFFu >> (length + 1));
    for (std::size_t i = 1; i < length; ++i) {
        if ((byte(i) & 0xC0u) != 0x80) return {0, 0};
        value = (value << 6) | (byte(i) & 0x3Fu);
    }
    constexpr std::array<char32_t, 5> smallest = {0, 0, 0x80, 0x800, 0x10000};
    const bool isSurrogate = value >= 0xD800 && value <= 0xDFFF;
    if (value < smallest[length] || value > 0x10FFFF || isSurrogate) return {0, 0};
    return {value, length};
}

bool isHarmful(char32_t c) {
    const bool isControl = c < 0x20 || (c >= 0x7F && c < 0xA0);
    const bool breaksLine = c == 0x2028 || c == 0x2029;
    const bool turnsDirection =
        c == 0x200E || c == 0x200F || (c >= 0x202A && c <= 0x202E) || (c >= 0x2066 && c <= 0x2069);
    return isControl || breaksLine || turnsDirection;
}

std::string escape(const char* format, unsigned value) {
    std::array<char, 16> buffer{};
    std::snprintf(buffer.data(), buffer.size(), format, value);
    return buffer.data();
}

}  // namespace

std::string printable(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    while (!text.empty()) {
        const CodePoint first = firstCodePoint(text);
        if (first.length == 0) {
            result += escape("\\x%02x", static_cast<unsigned char>(text[0]));
        } else if (!isHarmful(first.value)) {
            result += text.substr(0, first.length);
        } else {
            result += escape(first.value < 0x80 ? "\\x%02x" : "\\u%04x", first.value);
        }
        text.remove_prefix(std::max<std::size_t>(first.length, 1));
    }
    return result;
}

std::size_t characterCount(std::string_view text) {
    std::size_t count = 0;
    for (const char c : text)
        count += (static_cast<unsigned char>(c) & 0xC0u) != 0x80;
    return count;
}

std::string_view leadingCharacters(std::string_view text, std::size_t count) {
    std::size_t end = 0;
    while (end < text.size()) {
        const bool startsCharacter = (static_cast<unsigned char>(text[end]) & 0xC0u) != 0x80;
        if (startsCharacter && count-- == 0) break;
        ++end;
    }
    return text.substr(0, end);
}

std::string countText(std::int64_t count, const char* singular, const char* plural) {
    return std::to_string(count) + " " + (count == 1 ? singular : plural);
}

std::string decimalText(double value, int decimals) {
    std::array<char, 400> buffer{};
    std::snprintf(buffer.data(), buffer.size(), "%.*f", decimals, value);
    return buffer.data();
}

std::vector<std::string> splitList(std::string_view list, std::string_view separator) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + separator.size(), list.size()));
    }
    return parts;
}

}  // namespace zeb::cli
