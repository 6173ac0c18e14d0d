#include "cli/progress/ProgressReporter.h"

#include "cli/Text.h"
#include "cli/encode/ForecastText.h"
#include "cli/progress/BarProgress.h"
#include "cli/progress/JsonProgress.h"
#include "platform/text/NumberText.h"

namespace zeb::cli {
namespace {

/// Prints only the summary at the end.
class SilentProgress final : public ProgressReporter {
public:
    using ProgressReporter::ProgressReporter;

    void advanced(const ProgressState&) override {}
};

}  // namespace

void ProgressReporter::began(const EncodeJob& job) {
    m_job = job;
}

void ProgressReporter::planned(const Settings&, const ConversionPlan&) {}

void ProgressReporter::forecast(const Settings&, const SizeForecast&) {}

void ProgressReporter::estimated(const Settings& settings, const SizeForecast& forecast) {
    m_console.write(forecastText(m_job, settings, forecast));
}

void ProgressReporter::logged(const std::string& line) {
    if (isVerbose()) m_console.log(line);
}

void ProgressReporter::warned(const std::string& line) {
    m_console.complain(m_job.input + ": " + line, Colour::yellow);
}

void ProgressReporter::finished(const EncodeSummary& summary) {
    std::string pictures;
    if (summary.frames > 0) {
        pictures = std::to_string(summary.size.width) + "x" + std::to_string(summary.size.height) + ", " +
                   countText(summary.frames, "frame", "frames") + ", ";
    }
    m_console.writeLine(m_job.output + ": " + pictures + durationText(static_cast<double>(summary.seconds)) +
                        ", " + byteText(summary.bytes));
}

void ProgressReporter::failed(const EncodeFailure& failure) {
    // Some texts already begin with the file.
    const bool namesFile =
        failure.message.starts_with(m_job.input + ": ") || failure.message.starts_with(m_job.output + ": ");
    m_console.complain(namesFile ? failure.message : m_job.input + ": " + failure.message);
}

std::unique_ptr<ProgressReporter> makeProgressReporter(ProgressStyle style, Console& console,
                                                       Verbosity verbosity) {
    if (style == ProgressStyle::automatic) {
        style = console.outTerminal().isTerminal ? ProgressStyle::bar : ProgressStyle::plain;
    }
    switch (style) {
        case ProgressStyle::bar:
            return std::make_unique<BarProgress>(console, verbosity);
        case ProgressStyle::json:
            return std::make_unique<JsonProgress>(console, verbosity);
        case ProgressStyle::none:
            return std::make_unique<SilentProgress>(console, verbosity);
        default:
            return std::make_unique<PlainProgress>(console, verbosity);
    }
}

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
