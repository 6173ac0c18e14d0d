#include "platform/settings/UserDefaults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <limits>
#include <system_error>

namespace zeb {
namespace {

constexpr auto smallest = std::numeric_limits<std::int64_t>::min();
constexpr auto largest = std::numeric_limits<std::int64_t>::max();

std::string_view withoutBlanks(std::string_view text) {
    const std::size_t begin = text.find_first_not_of(" \t\n\v\f\r");
    return begin == std::string_view::npos ? std::string_view() : text.substr(begin);
}

std::int64_t integerOf(std::string_view text) {
    text = withoutBlanks(text);
    if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
    std::int64_t number = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
    if (result.ec == std::errc::result_out_of_range) return text.starts_with('-') ? smallest : largest;
    return number;
}

std::int64_t integerOf(double number) {
    if (std::isnan(number)) return 0;
    if (number >= 0x1p63) return largest;
    if (number < -0x1p63) return smallest;
    return static_cast<std::int64_t>(number);
}

bool booleanOf(std::string_view text) {
    text = withoutBlanks(text);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

template <typename Number>
std::string decimal(Number number) {
    std::array<char, 32> buffer{};
    const auto result = std::to_chars(buffer.data(), buffer.data() + buffer.size(), number);
    return {buffer.data(), result.ptr};
}

template <typename T>
std::optional<T> copyOf(const std::optional<PropertyValue>& value) {
    const T* found = value ? value->as<T>() : nullptr;
    return found != nullptr ? std::optional<T>(*found) : std::nullopt;
}

}  // namespace

std::int64_t UserDefaults::integer(std::string_view key) const {
    const auto value = object(key);
    if (!value) return 0;
    if (const auto* number = value->as<std::int64_t>()) return *number;
    if (const auto* number = value->as<double>()) return integerOf(*number);
    if (const auto* truth = value->as<bool>()) return *truth ? 1 : 0;
    if (const auto* text = value->as<std::string>()) return integerOf(*text);
    return 0;
}

bool UserDefaults::boolean(std::string_view key) const {
    const auto value = object(key);
    if (!value) return false;
    if (const auto* truth = value->as<bool>()) return *truth;
    if (const auto* number = value->as<std::int64_t>()) return *number != 0;
    if (const auto* number = value->as<double>()) return *number != 0;
    if (const auto* text = value->as<std::string>()) return booleanOf(*text);
    return false;
}

std::optional<std::string> UserDefaults::text(std::string_view key) const {
    const auto value = object(key);
    if (!value) return std::nullopt;
    if (const auto* number = value->as<std::int64_t>()) return decimal(*number);
    if (const auto* number = value->as<double>()) return decimal(*number);
    if (const auto* truth = value->as<bool>()) return *truth ? "1" : "0";
    return copyOf<std::string>(value);
}

std::optional<PropertyData> UserDefaults::data(std::string_view key) const {
    return copyOf<PropertyData>(object(key));
}

}  // namespace zeb
