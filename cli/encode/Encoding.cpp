#include "cli/encode/Encoding.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/encode/ForecastText.h"
#include "cli/encode/PartialOutput.h"
#include "cli/progress/SpeedMeter.h"
#include "conversion/look/FilmAnalysis.h"
#include "conversion/plan/ConversionPlan.h"
#include "conversion/run/ConversionRun.h"
#include "format/ZEBErrors.h"
#include "format/check/MovieFacts.h"
#include "platform/files/FileManager.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/PathName.h"
#include "platform/text/SystemErrorText.h"

namespace zeb::cli {
namespace {

using Clock = std::chrono::steady_clock;

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
        const PartialOutcome outcome = settlePartialMovie(m_output);
        const std::string separator = outcome.text.empty() ? "" : "; ";
        m_reporter.failed({failure.text + separator + outcome.text, failure.exitCode, outcome.keptSeconds});
        return failure.exitCode;
    }
}

ExitCode Encoding::estimate() {
    m_reporter.began(m_job);
    try {
        checkFiles();
        const OpenedSource source = openSource();
        const Settings settings = proposeSettings(source.asset());
        const ConversionPlan plan = planConversion(source.asset(), settings);
        const SizeForecast forecast = forecastAll(source.asset(), settings, plan);
        const std::string warning = breakOffWarning(source.asset(), settings, plan);
        if (!warning.empty()) m_reporter.warned(warning);
        m_reporter.estimated(settings, forecast);
        if (!forecast.fitsFormat()) return ExitCode::conversionFailed;
        return forecast.fitsSpace() ? ExitCode::done : ExitCode::unwritableOutput;
    } catch (...) {
        const Failure failure = describeCurrentFailure();
        m_reporter.failed({failure.text, failure.exitCode, 0});
        return failure.exitCode;
    }
}

SizeForecast Encoding::forecastAll(const MediaAsset& asset, const Settings& settings,
                                   const ConversionPlan& plan) const {
    const ForecastCase about{settings, plan, certainSoundOutlook(asset, settings, isInterrupted),
                             spaceFor(m_job.output)};
    return settings.qlModeNumber == 32 ? forecastFromSamples(asset, about, {}) : forecastUpperBound(about);
}

/// A quick forecast. If the upper bound fits, no picture is decoded. Returns nothing for an unreadable
/// source; the run reports the error.
std::optional<SizeForecast> Encoding::forecastQuickly(const MediaAsset& asset,
                                                      const Settings& settings) const {
    try {
        ForecastCase about{settings, planConversion(asset, settings), soundOutlook(asset, settings),
                           spaceFor(m_job.output)};
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
    effort.threads = threads();
    effort.startSeconds = static_cast<double>(about.plan.firstFrame) / about.plan.fps;
    effort.movieSeconds = about.plan.duration;
    RecordSamples samples(samplePictures(asset, effort, isInterrupted), effort.threads);
    return forecastSize(about, samples, isInterrupted);
}

void Encoding::reportForecast(const Settings& settings, const SizeForecast& forecast) {
    m_reporter.forecast(settings, forecast);
    const std::string warning = forecastWarning(forecast, folderOf(m_job.output));
    if (!warning.empty()) m_reporter.warned(warning);
}

void Encoding::convert() {
    checkFiles();
    const auto start = Clock::now();
    const OpenedSource source = openSource();
    const Settings settings = proposeSettings(source.asset());
    planConversion(source.asset(), settings);  // refuses wrong settings before the output is touched
    const std::optional<SizeForecast> forecast = forecastQuickly(source.asset(), settings);

    ConversionPlan plan;
    std::uint64_t bytes = 0;
    SpeedMeter meter(start);
    ConversionCallbacks callbacks;
    callbacks.isCancelled = isInterrupted;
    callbacks.progress = [&](const std::string& text, double) { m_reporter.logged(text); };
    callbacks.warned = [&](const std::string& text) { m_reporter.warned(text); };
    callbacks.planned = [&](const ConversionPlan& made) {
        plan = made;
        m_reporter.planned(settings, plan);
        if (forecast) reportForecast(settings, *forecast);
    };
    callbacks.advanced = [&](std::int64_t framesDone, std::uint64_t bytesWritten) {
        const auto now = Clock::now();
        // Restart the meter: the time before the first frame (analysis, sound) does not predict later frames.
        if (framesDone == 1) meter = SpeedMeter(now);
        bytes = bytesWritten;
        meter.note(now, framesDone);
        m_reporter.advanced({framesDone, plan.totalFrames, plan.fps, bytesWritten, meter.speed(),
                             meter.secondsFor(plan.totalFrames - framesDone)});
    };
    ConversionRun(source, m_arguments.threads).convert(m_job.input, m_output, settings, callbacks);

    const std::chrono::duration<double> elapsed = Clock::now() - start;
    m_reporter.finished({plan.size, plan.totalFrames, plan.seconds, bytes, elapsed.count()});
}

OutputTerms Encoding::termsOf(const EncodeArguments& arguments) {
    OutputTerms terms;
    if (arguments.force) terms.existing = OutputTerms::Existing::replace;
    // A missing folder is created if its name ends in "/".
    if (arguments.output && arguments.output->ends_with('/'))
        terms.missingFolder = OutputTerms::MissingFolder::make;
    return terms;
}

void Encoding::checkFiles() const {
    if (isInterrupted()) throw ZEBConverterError::cancelled();
    // Report a missing input before a bad output.
    if (isRemoteAddress(m_job.input)) throw MediaError(MediaError::cannotOpen, {"error_not_local"});
    if (!files::kindOf(m_job.input)) throw MediaError(MediaError::cannotOpen, systemErrorText(ENOENT));
    m_output.check(m_job.input);
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
    const std::int64_t track = m_arguments.others.audioTrackIndex + 1;
    if (m_arguments.others.audioChannels > 0 && soundTracks > 0 && track > soundTracks) {
        m_reporter.warned(localizedText("warning_no_such_track_format", {track, soundTracks}));
    }
    return settleAutomatic(
        asset, settingsFor(m_arguments, m_job.input, sourceInfo(asset.videoTracks().front())), threads(),
        isInterrupted, [this](const std::string& text) { m_reporter.logged(text); });
}

int Encoding::threads() const {
    if (m_arguments.threads > 0) return m_arguments.threads;
    return std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
}

}  // namespace zeb::cli
