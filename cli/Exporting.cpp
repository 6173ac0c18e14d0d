#include "cli/Exporting.h"

#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/SpeedMeter.h"
#include "conversion/NumberedName.h"
#include "format/ZEBConverterError.h"
#include "platform/FileManager.h"

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
    summary.seconds = roundedSeconds(result.plan);
    summary.bytes = result.bytes;
    summary.elapsedSeconds = elapsed.count();
    m_reporter.finished(summary);
}

void Exporting::checkOutput() const {
    const std::string& output = m_job.output;
    if (m_job.settings.kind != Kind::pictures) checkFree(output);
    const fs::path parent = fs::path(output).parent_path();
    const std::string folder = parent.empty() ? "." : parent.string();
    std::error_code ignored;
    if (!fs::is_directory(folder, ignored)) {
        if (fs::exists(folder, ignored)) throw FileError(output, ENOTDIR);
        const fs::path above = parent.parent_path();
        const bool canBeMade =
            m_job.mayMakeFolder && fs::is_directory(above.empty() ? fs::path(".") : above, ignored);
        if (!canBeMade) throw FileError(output, ENOENT);
    } else if (access(folder.c_str(), W_OK | X_OK) != 0) {
        throw FileError(output, errno);
    }
}

void Exporting::checkFree(const std::string& path) const {
    if (files::isSameFile(m_job.input, path)) throw OutputRefused::because(path, {"error_output_is_movie"});
    std::error_code ignored;
    const fs::file_status target = fs::status(path, ignored);
    if (fs::is_directory(target)) throw FileError(path, EISDIR);
    // Replacing a link to a device would remove the link.
    if (fs::exists(target) && !fs::is_regular_file(target))
        throw OutputRefused::because(path, {"error_not_ordinary_file"});
    if (files::kindOf(path) && !m_job.settings.replaces)
        throw OutputRefused::because(path, {"error_output_exists"});
}

void Exporting::checkPictures(const ExportPlan& plan) const {
    if (m_job.settings.kind != Kind::pictures) return;
    const fs::path pattern = m_job.output;
    const auto name = NumberedName::parse(pattern.filename());
    for (std::int64_t i = 0; name && i < plan.frames; ++i) {
        if (isInterrupted()) throw ZEBConverterError::cancelled();
        checkFree(fs::path(pattern).replace_filename(name->with(plan.first + i)));
    }
}

void Exporting::reportPlan(const ExportPlan& plan) {
    const ZEBHeader& header = plan.header;
    if (m_job.settings.interpretation != ExportSettings().interpretation && header.mode != 32)
        m_reporter.warned("--interpretation has no effect in Mode " + std::to_string(header.mode));
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
