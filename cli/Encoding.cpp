#include "cli/Encoding.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <system_error>
#include <thread>

#include "cli/Failure.h"
#include "cli/ForecastText.h"
#include "cli/Interruption.h"
#include "cli/SpeedMeter.h"
#include "cli/Text.h"
#include "conversion/ConversionRun.h"
#include "format/MovieFacts.h"
#include "format/ZEBConverterError.h"
#include "platform/FileManager.h"
#include "platform/LocalizedText.h"
#include "platform/SystemErrorText.h"

namespace zeb::cli {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

std::string folderOf(const fs::path& path) {
    const fs::path parent = path.parent_path();
    return parent.empty() ? "." : parent.string();
}

bool startsAsMovie(const std::string& path) {
    try {
        return isMovie(*openForReading(path));
    } catch (const FileError&) {
        return false;
    }
}

}  // namespace

ExitCode Encoding::run() {
    m_reporter.began(m_job);
    try {
        convert();
        return ExitCode::done;
    } catch (...) {
        const Failure failure = describeCurrentFailure();
        const auto outcome = failure.madeNoOutput ? PartialOutput::Outcome{} : m_partialOutput.settle();
        const std::string separator = outcome.text.empty() ? "" : "; ";
        m_reporter.failed({failure.text + separator + outcome.text, failure.exitCode, outcome.keptSeconds});
        return failure.exitCode;
    }
}

ExitCode Encoding::estimate() {
    m_reporter.began(m_job);
    try {
        if (isInterrupted()) throw ZEBConverterError::cancelled();
        // The run refuses that with the same text.
        if (files::isSameFile(m_job.input, m_job.output)) {
            throw ZEBConverterError::cannotCreateOutput(m_job.output);
        }
        const OpenedSource source = openSource();
        const Settings settings = proposeSettings(source.asset());
        const SizeForecast forecast = forecastAll(source.asset(), settings);
        m_reporter.estimated(settings, forecast);
        if (!forecast.fitsFormat()) return ExitCode::conversionFailed;
        return forecast.fitsSpace() ? ExitCode::done : ExitCode::unwritableOutput;
    } catch (...) {
        const Failure failure = describeCurrentFailure();
        m_reporter.failed({failure.text, failure.exitCode, 0});
        return failure.exitCode;
    }
}

SizeForecast Encoding::forecastAll(const MediaAsset& asset, const Settings& settings) const {
    const ForecastCase about{settings,
                             planConversion(asset.videoTracks().front(), asset.duration(), settings),
                             certainSoundOutlook(asset, settings, isInterrupted), spaceFor(m_job.output)};
    return settings.qlModeNumber == 32 ? forecastFromSamples(asset, about, {}) : forecastUpperBound(about);
}

/// What is worth the time before a run: where the most that the movie can become fits, no picture is looked
/// at. What is wrong with the source, the run says itself.
std::optional<SizeForecast> Encoding::forecastQuickly(const MediaAsset& asset,
                                                      const Settings& settings) const {
    try {
        ForecastCase about{settings, planConversion(asset.videoTracks().front(), asset.duration(), settings),
                           soundOutlook(asset, settings), spaceFor(m_job.output)};
        SizeForecast most = forecastUpperBound(about);
        if (most.fits()) return most;
        about.sound = certainSoundOutlook(asset, settings, isInterrupted);
        if (settings.qlModeNumber != 32) return forecastUpperBound(about);
        SamplingEffort effort;
        effort.pictures = 8;
        effort.decodedPictures = 7;
        effort.decodedSeconds = 0;
        return forecastFromSamples(asset, about, effort);
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

SizeForecast Encoding::forecastFromSamples(const MediaAsset& asset, const ForecastCase& about,
                                           SamplingEffort effort) const {
    effort.threads = m_arguments.threads > 0
                         ? m_arguments.threads
                         : std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    RecordSamples samples(samplePictures(asset, effort, isInterrupted), effort.threads);
    return forecastSize(about, samples, isInterrupted);
}

void Encoding::reportForecast(const Settings& settings, const SizeForecast& forecast) {
    m_reporter.forecast(settings, forecast);
    const std::string warning = forecastWarning(forecast, folderOf(m_job.output));
    if (!warning.empty()) m_reporter.warned(warning);
}

void Encoding::convert() {
    if (isInterrupted()) throw ZEBConverterError::cancelled();
    // What is not there says more than where it would go.
    if (!files::kindOf(m_job.input)) throw MediaError(MediaError::cannotOpen, systemErrorText(ENOENT));
    checkOutput();
    const auto start = Clock::now();
    const OpenedSource source = openSource();
    const Settings settings = proposeSettings(source.asset());
    const std::optional<SizeForecast> forecast = forecastQuickly(source.asset(), settings);

    ConversionPlan plan;
    SpeedMeter meter(start);
    ConversionCallbacks callbacks;
    callbacks.isCancelled = isInterrupted;
    callbacks.progress = [&](const std::string& text, double) {
        m_partialOutput.noteCreated();
        m_reporter.logged(text);
    };
    callbacks.warned = [&](const std::string& text) { m_reporter.warned(text); };
    callbacks.planned = [&](const ConversionPlan& made) {
        plan = made;
        if (makesFolder() && ::mkdir(folderOf(m_job.output).c_str(), 0777) != 0 && errno != EEXIST)
            throw FileError(folderOf(m_job.output), errno);
        m_partialOutput.noteReplaced();
        m_reporter.planned(settings, plan);
        if (forecast) reportForecast(settings, *forecast);
    };
    callbacks.advanced = [&](std::int64_t framesDone, std::uint64_t bytesWritten) {
        const auto now = Clock::now();
        // What came before the first frame, analysis and sound, says nothing about the frames to come.
        if (framesDone == 1) meter = SpeedMeter(now);
        m_partialOutput.noteCreated();
        meter.note(now, framesDone);
        m_reporter.advanced({framesDone, plan.totalFrames, plan.fps, bytesWritten, meter.speed(),
                             meter.secondsFor(plan.totalFrames - framesDone)});
    };
    ConversionRun(source, m_arguments.threads).convert(m_job.input, m_job.output, settings, callbacks);

    const std::chrono::duration<double> elapsed = Clock::now() - start;
    const std::uint64_t bytes = openForReading(m_job.output)->size();
    m_reporter.finished({plan.size, plan.totalFrames, plan.seconds, bytes, elapsed.count()});
}

void Encoding::checkOutput() const {
    const std::string& output = m_job.output;
    // The run itself refuses that, with its own text.
    if (files::isSameFile(m_job.input, output)) return;

    std::error_code ignored;
    const fs::file_status target = fs::status(output, ignored);
    if (fs::is_directory(target)) throw FileError(output, EISDIR);
    // Replacing a link to a device would remove the link.
    if (fs::exists(target) && !fs::is_regular_file(target))
        throw OutputRefused::because(output, {"error_not_ordinary_file"});
    if (files::kindOf(output) && !m_arguments.force) {
        throw OutputRefused::because(output, {"error_output_exists"});
    }
    std::string folder = folderOf(output);
    if (makesFolder() && !files::kindOf(folder)) folder = folderOf(folder);
    if (!fs::is_directory(folder, ignored)) {
        const char* key =
            files::kindOf(folder) ? "error_output_no_folder_format" : "error_output_missing_folder_format";
        throw OutputRefused::because(output, {key, {folder}});
    }
    if (access(folder.c_str(), W_OK | X_OK) != 0) throw FileError(output, errno);
}

/// A folder whose name ends in "/" is made when it is not there.
bool Encoding::makesFolder() const {
    return m_arguments.output && m_arguments.output->ends_with('/');
}

OpenedSource Encoding::openSource() const {
    try {
        return {m_library, m_job.input, isInterrupted};
    } catch (const MediaError& error) {
        if (error.code() == MediaError::cannotOpen && startsAsMovie(m_job.input))
            throw MediaError(MediaError::cannotOpen, {"error_already_movie"});
        throw;
    }
}

Settings Encoding::proposeSettings(const MediaAsset& asset) {
    if (asset.videoTracks().empty()) throw ZEBConverterError::noVideoTrack();
    const auto soundTracks = static_cast<std::int64_t>(asset.soundTracks().size());
    if (m_arguments.audioChannels > 0 && soundTracks > 0 && m_arguments.track > soundTracks) {
        m_reporter.warned(
            localizedText("warning_no_such_track_format", {std::int64_t{m_arguments.track}, soundTracks}));
    }
    return settingsFor(m_arguments, m_job.input, sourceInfo(asset.videoTracks().front()));
}

}  // namespace zeb::cli
