#include "player/TimeText.h"

#include <cstdint>

namespace zeb {
namespace {

std::string twoDigits(std::int64_t number) {
    return (number < 10 ? "0" : "") + std::to_string(number);
}

}  // namespace

std::string formatTime(double seconds) {
    if (!(seconds >= 0 && seconds < 0x1p63)) return "0:00";
    const auto total = static_cast<std::int64_t>(seconds);
    const std::int64_t minutes = total % 3600 / 60;
    const std::string end = ":" + twoDigits(total % 60);
    if (total < 3600) return std::to_string(minutes) + end;
    return std::to_string(total / 3600) + ":" + twoDigits(minutes) + end;
}

}  // namespace zeb
