#include "platform/text/NumberText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <system_error>

#include "platform/text/LocalizedText.h"
#include "platform/text/TextFormat.h"

namespace zeb {
namespace {

struct Unit {
    double bytes;
    const char* name;
};
constexpr std::array units = {Unit{1e3, "kB"}, Unit{1e6, "MB"}, Unit{1e9, "GB"}, Unit{1e12, "TB"}};

std::string inUnit(std::uint64_t bytes, const Unit& unit, std::string_view decimalMark) {
    const std::array<TextArgument, 2> arguments = {static_cast<double>(bytes) / unit.bytes,
                                                   std::string(unit.name)};
    return formatText("%.1f %@", arguments, decimalMark);
}

/// Returns the smallest unit in which the size is not rounded up to 1000.0.
const Unit& unitFor(std::uint64_t bytes) {
    const auto* unit = std::ranges::find_if(
        units, [bytes](const Unit& each) { return static_cast<double>(bytes) < 999.95 * each.bytes; });
    return unit != units.end() ? *unit : units.back();
}

std::string twoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

bool isCountable(double seconds) {
    return seconds >= 0 && seconds < 0x1p63;
}

}  // namespace

std::string clockText(std::int64_t seconds) {
    const std::int64_t hours = seconds / 3600;
    const std::int64_t minutes = seconds / 60 % 60;
    const std::string end = ":" + twoDigits(seconds % 60);
    if (hours == 0) return std::to_string(minutes) + end;
    return std::to_string(hours) + ":" + twoDigits(minutes) + end;
}

std::string durationText(double seconds) {
    return clockText(std::llround(seconds > 0 ? std::min(seconds, 3.6e12) : 0));
}

std::string formatDuration(double seconds) {
    return isCountable(seconds) ? clockText(static_cast<std::int64_t>(std::round(seconds))) : unknownText;
}

std::string formatTime(double seconds) {
    return clockText(isCountable(seconds) ? static_cast<std::int64_t>(seconds) : 0);
}

std::string byteText(std::uint64_t bytes) {
    if (bytes >= 1000) return inUnit(bytes, unitFor(bytes), ".");
    return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

std::string byteCountText(std::uint64_t bytes) {
    return inUnit(bytes, unitFor(bytes), textLocale().decimalMark);
}

std::string megabytesText(std::uint64_t bytes) {
    return inUnit(bytes, units[1], textLocale().decimalMark);
}

std::optional<int> wholeNumber(std::string_view text, int lowest, int highest) {
    int value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || rest != end || value < lowest || value > highest) return std::nullopt;
    return value;
}

std::optional<double> decimalNumber(std::string_view text, double lowest, double highest) {
    double value = 0;
    const char* end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, value, std::chars_format::fixed);
    if (error != std::errc() || rest != end || !(value >= lowest && value <= highest)) return std::nullopt;
    return value;
}

}  // namespace zeb
