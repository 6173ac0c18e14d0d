#include "cli/export/Exporting.h"

#include <chrono>
#include <cmath>
#include <filesystem>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/progress/SpeedMeter.h"
#include "conversion/plan/OutputName.h"
#include "format/ZEBErrors.h"
#include "media/Media.h"
#include "platform/files/OutputPlace.h"
#include "platform/text/LocalizedText.h"

namespace zeb::cli {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;
using Kind = ExportSettings::Kind;

std::int64_t roundedSeconds(const ExportPlan& plan) {
    return (plan.frames + plan.header.fps / 2) / plan.header.fps;
}

}  // namespace

ExitCode Exporting::run() {
    m_reporter.began({m_job.input, m_job.output});
    try {
        exportMovie();
        return ExitCode::done;
    } catch (...) {
        const Failure failure = describeCurrentFailure();
        m_reporter.failed({failure.text, failure.exitCode, 0});
        return failure.exitCode;
    }
}

void Exporting::exportMovie() {
    if (isInterrupted()) throw ZEBConverterError::cancelled();
    if (isRemoteAddress(m_job.input)) throw MediaError(MediaError::cannotOpen, {"error_not_local"});
    checkOutput();
    const auto start = Clock::now();
    SpeedMeter meter(start);
    ExportPlan plan;
    ExportCallbacks callbacks;
    callbacks.isCancelled = isInterrupted;
    callbacks.logged = [&](const std::string& line) { m_reporter.logged(line); };
    callbacks.warned = [&](const std::string& line) { m_reporter.warned(line); };
    callbacks.planned = [&](const ExportPlan& made) {
        plan = made;
        checkPictures(plan);
        reportPlan(plan);
    };
    callbacks.advanced = [&](std::int64_t framesDone, std::uint64_t bytesWritten) {
        const auto now = Clock::now();
        if (framesDone == 1) meter = SpeedMeter(now);
        meter.note(now, framesDone);
        m_reporter.advanced({framesDone, std::max<std::int64_t>(plan.frames, 1), plan.header.fps,
                             bytesWritten, meter.speed(), meter.secondsFor(plan.frames - framesDone)});
    };
    const ExportResult result =
        ExportRun(m_library).run(m_job.input, m_job.output, m_job.settings, callbacks);

    const std::chrono::duration<double> elapsed = Clock::now() - start;
    EncodeSummary summary;
    if (m_job.settings.kind != Kind::sound) {
        summary.size = {result.plan.width, result.plan.height};
        summary.frames = result.plan.frames;
    }
    summary.seconds = std::llround(result.seconds);
    summary.bytes = result.bytes;
    summary.elapsedSeconds = elapsed.count();
    m_reporter.finished(summary);
}

void Exporting::checkOutput() const {
    const OutputPlace place(m_job.output, m_job.settings.terms);
    if (m_job.settings.kind == Kind::pictures) {
        place.checkFolder();  // file names are not known before the plan
    } else {
        place.check(m_job.input);
    }
}

void Exporting::checkPictures(const ExportPlan& plan) const {
    if (m_job.settings.kind != Kind::pictures) return;
    const fs::path pattern = m_job.output;
    const auto name = NumberedName::parse(pattern.filename());
    for (std::int64_t i = 0; name && i < plan.frames; ++i) {
        if (isInterrupted()) throw ZEBConverterError::cancelled();
        OutputPlace(fs::path(pattern).replace_filename(name->with(plan.first + i)), m_job.settings.terms)
            .check(m_job.input);
    }
}

void Exporting::reportPlan(const ExportPlan& plan) {
    const ZEBHeader& header = plan.header;
    if (m_job.settings.interpretation != ExportSettings().interpretation && header.mode != 32)
        m_reporter.warned(localizedText("warning_no_interpretation_format", {std::int64_t{header.mode}}));
    Settings settings;
    settings.title = header.title;
    settings.qlModeNumber = header.mode;
    ConversionPlan shown;
    shown.source = {header.width, header.height, header.fps};
    shown.size = {plan.width, plan.height};
    shown.fps = header.fps;
    shown.duration = static_cast<double>(plan.allFrames) / header.fps;
    shown.seconds = roundedSeconds(plan);
    shown.totalFrames = plan.frames;
    m_reporter.planned(settings, shown);
}

}  // namespace zeb::cli
