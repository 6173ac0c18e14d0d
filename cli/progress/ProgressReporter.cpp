#include "cli/progress/ProgressReporter.h"

#include "cli/Text.h"
#include "cli/encode/ForecastText.h"
#include "cli/progress/BarProgress.h"
#include "cli/progress/JsonProgress.h"
#include "cli/progress/PlainProgress.h"
#include "cli/progress/SilentProgress.h"
#include "platform/text/TextFormat.h"

namespace zeb::cli {

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
    // Some texts begin with the file already.
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

}  // namespace zeb::cli
