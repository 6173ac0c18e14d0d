#include "conversion/plan/TimeRange.h"

#include "platform/text/NumberText.h"

namespace zeb {
namespace {

constexpr std::size_t mostDecimals = 6;
constexpr int millionths = 1'000'000;

/// Returns the millionths that the digits after a point state; nothing for other text.
std::optional<int> fraction(std::string_view digits) {
    if (digits.empty() || digits.size() > mostDecimals || digits.front() == '-') return std::nullopt;
    std::string padded(digits);
    padded.resize(mostDecimals, '0');
    return wholeNumber(padded, 0, millionths - 1);
}

/// Cuts the digits behind a point off `text` and returns their millionths: 0 without a point.
std::optional<int> takeFraction(std::string_view& text) {
    const std::size_t point = text.find('.');
    if (point == std::string_view::npos) return 0;
    const std::string_view digits = text.substr(point + 1);
    text = text.substr(0, point);
    return fraction(digits);
}

/// Returns "" for 0, otherwise a point and the digits without closing zeros.
std::string fractionText(std::int64_t value) {
    if (value == 0) return "";
    std::string digits = std::to_string(millionths + value).substr(1);
    digits.erase(digits.find_last_not_of('0') + 1);
    return "." + digits;
}

}  // namespace

double TimePoint::seconds(double duration) const {
    const double number = static_cast<double>(value) / millionths;
    return unit == Unit::percent ? number / 100 * duration : number;
}

std::optional<std::int64_t> parseTime(std::string_view text) {
    constexpr int mostHours = 100'000;
    const std::optional<int> rest = takeFraction(text);
    if (!rest) return std::nullopt;
    std::int64_t seconds = 0;
    // After the first number, minutes and seconds are limited to 59.
    for (int part = 0; part < 3; ++part) {
        const std::size_t colon = text.find(':');
        const auto value = wholeNumber(text.substr(0, colon), 0, part == 0 ? mostHours * 3600 : 59);
        if (!value) return std::nullopt;
        seconds = seconds * 60 + *value;
        if (colon == std::string_view::npos) return seconds * millionths + *rest;
        text = text.substr(colon + 1);
    }
    return std::nullopt;
}

std::optional<TimePoint> parseTimePoint(std::string_view text) {
    if (!text.ends_with('%')) {
        const std::optional<std::int64_t> time = parseTime(text);
        return time ? std::optional(TimePoint{TimePoint::Unit::microseconds, *time}) : std::nullopt;
    }
    text.remove_suffix(1);
    const std::optional<int> rest = takeFraction(text);
    const std::optional<int> whole = wholeNumber(text, 0, 100);
    if (!rest || !whole || (*whole == 100 && *rest > 0)) return std::nullopt;
    return TimePoint{TimePoint::Unit::percent, std::int64_t{*whole} * millionths + *rest};
}

std::string timePointText(const TimePoint& time) {
    const std::int64_t whole = time.value / millionths;
    const std::string rest = fractionText(time.value % millionths);
    if (time.unit == TimePoint::Unit::percent) return std::to_string(whole) + rest + "%";
    return clockText(whole) + rest;
}

}  // namespace zeb
