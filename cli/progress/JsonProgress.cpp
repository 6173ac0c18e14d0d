#include "cli/progress/JsonProgress.h"

#include "cli/Json.h"
#include "cli/encode/ForecastText.h"

namespace zeb::cli {
void JsonProgress::began(const EncodeJob& job) {
    ProgressReporter::began(job);
    m_pacer = Pacer(std::chrono::milliseconds(100));
    m_framesShown = 0;
}

void JsonProgress::planned(const Settings& settings, const ConversionPlan& plan) {
    console().write(jsonLine({
        {"type", "start"},
        {"input", job().input},
        {"output", job().output},
        {"title", settings.title},
        {"width", plan.size.width},
        {"height", plan.size.height},
        {"framesPerSecond", plan.fps},
        {"frames", plan.totalFrames},
        {"seconds", plan.seconds},
        {"mode", settings.qlModeNumber},
        {"sourceWidth", plan.source.width},
        {"sourceHeight", plan.source.height},
        {"sourceFramesPerSecond", plan.source.fps},
        {"sourceSeconds", plan.duration},
    }));
}

void JsonProgress::forecast(const Settings& settings, const SizeForecast& forecast) {
    console().write(forecastJson(job(), settings, forecast));
}

void JsonProgress::estimated(const Settings& settings, const SizeForecast& forecast) {
    JsonProgress::forecast(settings, forecast);
}

void JsonProgress::advanced(const ProgressState& state) {
    const bool isLast = state.framesDone == state.totalFrames && m_framesShown != state.totalFrames;
    if (!m_pacer.isDue(Pacer::TimePoint::clock::now()) && !isLast) return;
    m_framesShown = state.framesDone;
    console().write(jsonLine({
        {"type", "progress"},
        {"input", job().input},
        {"frames", state.framesDone},
        {"totalFrames", state.totalFrames},
        {"fraction", state.fraction()},
        {"bytes", state.bytes},
        {"speed", state.speed > 0 ? JsonValue(state.speed) : JsonValue()},
        {"remainingSeconds", state.remainingSeconds},
    }));
}

void JsonProgress::logged(const std::string& line) {
    ProgressReporter::logged(line);
    writeMessage("log", line);
}

void JsonProgress::warned(const std::string& line) {
    ProgressReporter::warned(line);
    writeMessage("warning", line);
}

void JsonProgress::finished(const EncodeSummary& summary) {
    console().write(jsonLine({
        {"type", "done"},
        {"input", job().input},
        {"output", job().output},
        {"width", summary.size.width},
        {"height", summary.size.height},
        {"frames", summary.frames},
        {"seconds", summary.seconds},
        {"bytes", summary.bytes},
        {"elapsedSeconds", summary.elapsedSeconds},
    }));
}

void JsonProgress::failed(const EncodeFailure& failure) {
    ProgressReporter::failed(failure);
    console().write(jsonLine({
        {"type", "error"},
        {"input", job().input},
        {"output", job().output},
        {"message", failure.message},
        {"exitCode", static_cast<int>(failure.exitCode)},
        {"keptSeconds", failure.keptSeconds},
    }));
}

void JsonProgress::writeMessage(const char* type, const std::string& line) {
    console().write(jsonLine({{"type", type}, {"input", job().input}, {"message", line}}));
}

}  // namespace zeb::cli
