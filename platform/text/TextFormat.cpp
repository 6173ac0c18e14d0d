#include "platform/text/TextFormat.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <optional>

namespace zeb {
namespace {

constexpr int defaultPrecision = 6;

/// A specifier at the start of a text.
struct Specifier {
    std::size_t length = 0;               ///< in characters, per cent sign included
    std::optional<std::size_t> position;  ///< number of its argument from 1, if stated
    int precision = defaultPrecision;
};

bool isDigit(char character) {
    return character >= '0' && character <= '9';
}

/// Removes one or two digits from the front and returns their number; nothing for none or more digits.
std::optional<int> takeNumber(std::string_view& text) {
    std::size_t digits = 0;
    int number = 0;
    while (digits < text.size() && isDigit(text[digits])) {
        if (digits == 2) return std::nullopt;
        number = number * 10 + (text[digits++] - '0');
    }
    if (digits == 0) return std::nullopt;
    text.remove_prefix(digits);
    return number;
}

/// Returns the specifier at the start of `text`, which starts with a per cent sign; nothing if it is invalid.
std::optional<Specifier> specifierAt(std::string_view text) {
    Specifier specifier;
    std::string_view rest = text.substr(1);
    if (!rest.empty() && isDigit(rest.front())) {
        const auto position = takeNumber(rest);
        if (!position || *position == 0 || !rest.starts_with('$')) return std::nullopt;
        specifier.position = static_cast<std::size_t>(*position);
        rest.remove_prefix(1);
    }
    bool hasPrecision = false;
    if (rest.starts_with('.')) {
        rest.remove_prefix(1);
        const auto precision = takeNumber(rest);
        if (!precision) return std::nullopt;
        specifier.precision = *precision;
        hasPrecision = true;
    }
    if (rest.starts_with('f')) {
        rest.remove_prefix(1);
    } else if (!hasPrecision && rest.starts_with("lld")) {
        rest.remove_prefix(3);
    } else if (!hasPrecision && rest.starts_with('@')) {
        rest.remove_prefix(1);
    } else {
        return std::nullopt;
    }
    specifier.length = text.size() - rest.size();
    return specifier;
}

struct ArgumentText {
    int precision;
    std::string_view decimalMark;

    std::string operator()(std::int64_t number) const { return std::to_string(number); }
    std::string operator()(double number) const {
        // Size for the largest double, 309 digits, and 99 decimals. Unlike printf, this ignores the locale,
        // which a user-interface library may have set for the process.
        std::array<char, 512> buffer{};
        const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number,
                                       std::chars_format::fixed, precision);
        std::string text(buffer.data(), end.ptr);
        const std::size_t point = text.find('.');
        return point == std::string::npos ? text : text.replace(point, 1, decimalMark);
    }
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(const KeyedText& text) const { return text.key; }
};

}  // namespace

std::string formatText(std::string_view format, std::span<const TextArgument> arguments,
                       std::string_view decimalMark) {
    std::string result;
    std::size_t nextArgument = 0;
    while (!format.empty()) {
        const std::size_t plain = std::min(format.find('%'), format.size());
        result += format.substr(0, plain);
        format.remove_prefix(plain);
        if (format.empty()) break;
        if (format.starts_with("%%")) {
            result += '%';
            format.remove_prefix(2);
            continue;
        }
        const auto specifier = specifierAt(format);
        const std::size_t length = specifier ? specifier->length : 1;
        const std::size_t index = !specifier            ? arguments.size()
                                  : specifier->position ? *specifier->position - 1
                                                        : nextArgument++;
        if (index < arguments.size()) {
            result += std::visit(ArgumentText{specifier->precision, decimalMark}, arguments[index]);
        } else {
            result += format.substr(0, length);
        }
        format.remove_prefix(length);
    }
    return result;
}

}  // namespace zeb
