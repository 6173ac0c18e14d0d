#include "ui/model/DurationText.h"

#include <cmath>
#include <cstdint>

#include "ui/model/UnknownText.h"

namespace zeb {
namespace {

std::string twoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string formatDuration(double seconds) {
    // What does not fit the count of seconds is as good as endless.
    if (!(seconds >= 0 && seconds < 0x1p63)) return unknownText;
    const auto total = static_cast<std::int64_t>(std::round(seconds));
    const std::int64_t hours = total / 3600;
    const std::int64_t minutes = total / 60 % 60;
    const std::string end = ":" + twoDigits(total % 60);
    if (hours == 0) return std::to_string(minutes) + end;
    return std::to_string(hours) + ":" + twoDigits(minutes) + end;
}

}  // namespace zeb
