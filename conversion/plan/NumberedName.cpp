#include "conversion/plan/NumberedName.h"

namespace zeb {
namespace {

/// The length of the number's place that `text` has at `start`: "%", up to two digits, "d"; 0 when it has
/// none there.
std::size_t placeLength(const std::string& text, std::size_t start) {
    constexpr std::size_t mostDigits = 2;
    std::size_t end = start + 1;
    while (end < text.size() && end - start <= mostDigits && text[end] >= '0' && text[end] <= '9')
        ++end;
    return end < text.size() && text[end] == 'd' ? end + 1 - start : 0;
}

}  // namespace

std::optional<NumberedName> NumberedName::parse(const std::string& pattern) {
    std::optional<NumberedName> name;
    for (std::size_t start = pattern.find('%'); start != std::string::npos;
         start = pattern.find('%', start + 1)) {
        const std::size_t length = placeLength(pattern, start);
        if (length == 0) continue;
        if (name) return std::nullopt;
        name.emplace();
        name->m_before = pattern.substr(0, start);
        name->m_after = pattern.substr(start + length);
        for (std::size_t i = start + 1; i < start + length - 1; ++i)
            name->m_digits = (i == start + 1 ? 0 : name->m_digits * 10) + (pattern[i] - '0');
    }
    return name;
}

std::string NumberedName::with(std::int64_t number) const {
    std::string digits = std::to_string(number);
    const auto wanted = static_cast<std::size_t>(m_digits);
    if (digits.size() < wanted) digits.insert(0, wanted - digits.size(), '0');
    return m_before + digits + m_after;
}

}  // namespace zeb
