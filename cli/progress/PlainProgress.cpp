#include "cli/progress/PlainProgress.h"

#include "cli/Text.h"
#include "cli/encode/ForecastText.h"
#include "cli/progress/ProgressLines.h"
#include "platform/text/TextFormat.h"

namespace zeb::cli {

void PlainProgress::planned(const Settings& settings, const ConversionPlan& plan) {
    console().writeLine(job().input + " -> " + job().output + ": " + std::to_string(plan.size.width) + "x" +
                        std::to_string(plan.size.height) + ", " + countText(plan.fps, "frame", "frames") +
                        " per second, " + durationText(static_cast<double>(plan.seconds)) + ", Mode " +
                        std::to_string(settings.qlModeNumber));
    m_secondsShown = 0;
    m_pacer = Pacer(std::chrono::seconds(1));
}

void PlainProgress::forecast(const Settings&, const SizeForecast& forecast) {
    console().writeLine(forecastLine(forecast));
}

void PlainProgress::advanced(const ProgressState& state) {
    if (state.secondsDone() == m_secondsShown || !m_pacer.isDue(Pacer::TimePoint::clock::now())) return;
    m_secondsShown = state.secondsDone();
    console().writeLine(plainLine(state));
}

}  // namespace zeb::cli
