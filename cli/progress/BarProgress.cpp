#include "cli/progress/BarProgress.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "cli/Text.h"
#include "cli/encode/ForecastText.h"
#include "platform/text/NumberText.h"

namespace zeb::cli {
namespace {

constexpr int usualColumns = 80;
constexpr std::size_t widestBar = 40;
constexpr std::size_t narrowestBar = 5;

// Leaves the last column free: a character there makes some terminals wrap.
std::size_t usableColumns(int columns) {
    return static_cast<std::size_t>(std::max((columns > 0 ? columns : usualColumns) - 1, 0));
}

std::string percentText(const ProgressState& state) {
    // Rounded down: 100 means complete.
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

void BarProgress::began(const EncodeJob& job) {
    ProgressReporter::began(job);
    m_started = false;
    m_pacer = Pacer(std::chrono::milliseconds(100));
}

void BarProgress::forecast(const Settings&, const SizeForecast& forecast) {
    clear();
    console().writeLine(job().output + ": " + forecastLine(forecast));
}

void BarProgress::advanced(const ProgressState& state) {
    m_started = m_started || state.framesDone > 0;
    const bool isLast = state.framesDone == state.totalFrames;
    if (m_pacer.isDue(Pacer::TimePoint::clock::now()) || isLast) {
        draw(barLine(state, console().outTerminal().columns()));
    }
}

void BarProgress::logged(const std::string& line) {
    const std::string standing = m_line;
    clear();
    ProgressReporter::logged(line);
    // Before the first frame, show the log line.
    const bool showsLine = !m_started && !isVerbose();
    draw(showsLine ? fittedLine(line, console().outTerminal().columns()) : standing);
}

void BarProgress::warned(const std::string& line) {
    const std::string standing = m_line;
    clear();
    ProgressReporter::warned(line);
    draw(standing);
}

void BarProgress::finished(const EncodeSummary& summary) {
    clear();
    ProgressReporter::finished(summary);
}

void BarProgress::failed(const EncodeFailure& failure) {
    clear();
    ProgressReporter::failed(failure);
}

void BarProgress::draw(const std::string& line) {
    if (line == m_line) return;
    // Overwrite with spaces: not every terminal supports a control sequence for erasing.
    const std::size_t length = characterCount(line);
    const std::size_t oldLength = characterCount(m_line);
    std::string text = "\r";
    const std::size_t barEnd = line.starts_with('[') ? line.find_first_of(".]") : std::string::npos;
    const std::size_t filledEnd = barEnd != std::string::npos ? barEnd : 0;
    text += console().coloured(line.substr(0, filledEnd), Colour::green) + line.substr(filledEnd);
    if (oldLength > length) text += std::string(oldLength - length, ' ');
    if (length == 0) text += "\r";
    console().write(text);
    m_line = line;
}

}  // namespace zeb::cli
