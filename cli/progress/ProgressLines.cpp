#include "cli/progress/ProgressLines.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "cli/Text.h"
#include "platform/text/TextFormat.h"

namespace zeb::cli {
namespace {

constexpr int usualColumns = 80;
constexpr std::size_t widestBar = 40;
constexpr std::size_t narrowestBar = 5;

// The last column stays free: a character there makes some terminals go on to the next line.
std::size_t usableColumns(int columns) {
    return static_cast<std::size_t>(std::max((columns > 0 ? columns : usualColumns) - 1, 0));
}

std::string percentText(const ProgressState& state) {
    // Rounded down: 100 means done.
    const std::string number = std::to_string(static_cast<int>(std::floor(state.fraction() * 100)));
    return std::string(number.size() < 3 ? 3 - number.size() : 0, ' ') + number + " %";
}

std::string speedText(const ProgressState& state) {
    return state.speed > 0 ? decimalText(state.speed, state.speed < 100 ? 1 : 0) + " fps" : "-- fps";
}

std::string remainingText(const ProgressState& state) {
    return (state.remainingSeconds ? durationText(*state.remainingSeconds) : "-:--") + " left";
}

std::string bar(const ProgressState& state, std::size_t width) {
    const double exact = state.fraction() * static_cast<double>(width);
    const std::size_t filled = std::min(static_cast<std::size_t>(exact), width);
    return "[" + std::string(filled, '#') + std::string(width - filled, '.') + "]  ";
}

}  // namespace

std::string barLine(const ProgressState& state, int columns) {
    constexpr std::size_t frameOfBar = 4;  // two brackets, two spaces
    const std::size_t usable = usableColumns(columns);
    const std::string percent = percentText(state);
    const std::string remaining = "  " + remainingText(state);
    const std::string text = percent + "  " + speedText(state) + remaining;
    const std::string textWithSize = text + "  " + byteText(state.bytes);
    for (const std::string& beside : {textWithSize, text}) {
        const std::size_t needed = beside.size() + frameOfBar;
        if (needed + narrowestBar <= usable) return bar(state, std::min(usable - needed, widestBar)) + beside;
    }
    for (const std::string& alone : {text, percent + remaining}) {
        if (alone.size() <= usable) return alone;
    }
    return percent.substr(0, usable);
}

std::string plainLine(const ProgressState& state) {
    return percentText(state) + "  " + std::to_string(state.framesDone) + " of " +
           countText(state.totalFrames, "frame", "frames") + "  " + speedText(state) + "  " +
           remainingText(state) + "  " + byteText(state.bytes);
}

std::string fittedLine(std::string_view text, int columns) {
    return std::string(leadingCharacters(printable(text), usableColumns(columns)));
}

}  // namespace zeb::cli
