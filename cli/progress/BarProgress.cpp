#include "cli/progress/BarProgress.h"

#include "cli/Text.h"
#include "cli/encode/ForecastText.h"
#include "cli/progress/ProgressLines.h"

namespace zeb::cli {

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
    // Until frames come, the line tells what is going on.
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
    // Blanks instead of a control sequence for "erase": every terminal knows them.
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
