#include "conversion/model/ConverterViewModel.h"

#include <QDateTime>
#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <utility>

#include "conversion/plan/OutputName.h"
#include "format/ZEBErrors.h"
#include "format/check/MovieFacts.h"
#include "platform/files/FileManager.h"
#include "platform/text/ErrorText.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/PathName.h"
#include "platform/text/UTF8.h"

namespace zeb {
namespace {

constexpr const char* movieExtension = "zeb";

bool isCancellation(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const ZEBConverterError& converterError) {
        return converterError.errorCase() == ZEBConverterError::Case::cancelled;
    } catch (...) {
        return false;
    }
}

/// Returns whether to offer the unfinished movie at `output` to the user. If an earlier movie was set aside,
/// or the run failed, the unfinished movie must have at least one whole second.
bool leavesMovie(const OutputPlace& output, bool wasCancelled) {
    if (!output.isOwn()) return false;
    try {
        if (wasCancelled && output.previousPath().empty())
            return files::sizeOf(output.path()).value_or(0) > 0;
        return readMovieFacts(*openForReading(output.path())).wholeSeconds > 0;
    } catch (const std::exception&) {
        return false;
    }
}

/// Discards an output. If the earlier movie cannot be moved back, it keeps its temporary name.
void putBackQuietly(OutputPlace& output) {
    try {
        output.putBack();
    } catch (const FileError&) {
        output.keepBoth();
    }
}

std::string dateText(Clock::Date date) {
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(date.time_since_epoch()).count();
    return QDateTime::fromSecsSinceEpoch(seconds).toString("yyyy-MM-dd HH:mm:ss t").toStdString();
}

std::vector<ContentType> videoTypes() {
    std::vector<ContentType> types = {{ContentType::movie, {}}, {ContentType::video, {}}};
    for (const char* extension : {"m4v", "mkv", "mp4", "mov", "avi", "mpg", "mpeg", "m2v"})
        types.push_back({ContentType::filenameExtension, extension});
    return types;
}

bool isSamePlace(const URL& first, const URL& second) {
    return first == second || files::isSameFile(first.path(), second.path());
}

/// Holds the platform's access permission for the duration of a job.
class ScopedAccess {
public:
    ScopedAccess(SecurityScope& scope, std::string path)
        : m_scope(scope), m_path(std::move(path)), m_wasGranted(scope.startAccessing(m_path)) {}
    ~ScopedAccess() {
        if (m_wasGranted) m_scope.stopAccessing(m_path);
    }
    ScopedAccess(const ScopedAccess&) = delete;
    ScopedAccess& operator=(const ScopedAccess&) = delete;

private:
    SecurityScope& m_scope;
    std::string m_path;
    bool m_wasGranted;
};

}  // namespace

ConverterViewModel::ConverterViewModel(ConverterServices services, QObject* parent)
    : QObject(parent), m_services(std::move(services)), m_statusText(localizedText("status_ready")) {
    connect(&m_settings, &SettingsModel::includeAudioChanged, this, &ConverterViewModel::soundSwitched);
    connect(&m_settings, &SettingsModel::audioChannelsChanged, this, [this] {
        if (!m_isAdaptingSound) m_channelsBefore.reset();
    });
    connect(&m_settings, &SettingsModel::fpsFromSourceChanged, this, &ConverterViewModel::takeSourceRate);
}

ConverterViewModel::~ConverterViewModel() = default;

template <typename T>
void ConverterViewModel::publish(T& field, T value, void (ConverterViewModel::*changed)()) {
    if (field == value) return;
    field = std::move(value);
    emit(this->*changed)();
}

template <typename Work>
auto ConverterViewModel::whileAlive(Work work) {
    return [alive = std::weak_ptr(m_alive), work = std::move(work)](auto&&... arguments) mutable {
        if (!alive.expired()) work(std::forward<decltype(arguments)>(arguments)...);
    };
}

// MARK: State shown by the window

QString ConverterViewModel::inputPath() const {
    return m_inputURL ? QString::fromStdString(m_inputURL->path()) : QString();
}

QString ConverterViewModel::outputPath() const {
    return m_outputURL ? QString::fromStdString(m_outputURL->path()) : QString();
}

QStringList ConverterViewModel::audioTrackLabels() const {
    QStringList labels;
    for (const AudioTrack& track : m_availableAudioTracks)
        labels << QString::fromStdString(track.label);
    return labels;
}

QString ConverterViewModel::logText() const {
    std::string text;
    for (const std::string& line : m_logLines)
        text += line + '\n';
    if (!text.empty()) text.pop_back();
    return QString::fromStdString(text);
}

void ConverterViewModel::publishInput(const std::optional<URL>& url) {
    const bool couldStart = canStart();
    publish(m_inputURL, url, &ConverterViewModel::inputURLChanged);
    if (canStart() != couldStart) emit canStartChanged();
}

void ConverterViewModel::publishOutput(const std::optional<URL>& url) {
    const bool couldStart = canStart();
    publish(m_outputURL, url, &ConverterViewModel::outputURLChanged);
    if (canStart() != couldStart) emit canStartChanged();
}

void ConverterViewModel::setRunning(bool isRunning) {
    const bool couldStart = canStart();
    publish(m_isRunning, isRunning, &ConverterViewModel::isRunningChanged);
    if (canStart() != couldStart) emit canStartChanged();
}

void ConverterViewModel::setWaitingStart(std::optional<WaitingStart> start) {
    const bool couldStart = canStart();
    const bool wasWaiting = isWaiting();
    m_waitingStart = std::move(start);
    if (isWaiting() != wasWaiting) emit isWaitingChanged();
    if (canStart() != couldStart) emit canStartChanged();
}

void ConverterViewModel::setStatus(const char* key) {
    publish(m_statusText, localizedText(key), &ConverterViewModel::statusTextChanged);
}

void ConverterViewModel::setLastError(const std::optional<std::string>& text) {
    publish(m_lastError, text, &ConverterViewModel::lastErrorChanged);
}

void ConverterViewModel::showNotice(const std::string& text) {
    if (!m_isRunning) publish(m_statusText, text, &ConverterViewModel::statusTextChanged);
    appendLog(text);
}

void ConverterViewModel::appendLog(const std::string& line) {
    appendLogLines({line});
}

void ConverterViewModel::appendLogLines(std::deque<std::string> lines) {
    if (lines.empty()) return;
    std::move(lines.begin(), lines.end(), std::back_inserter(m_logLines));
    while (m_logLines.size() > maximumLogLines)
        m_logLines.pop_front();
    emit logLinesChanged();
}

void ConverterViewModel::copyLog() {
    m_services.copyText(logText().toStdString());
    m_services.sounds.play(SoundEffect::logsAccessed);
}

// MARK: The input and its analysis

void ConverterViewModel::chooseInput() {
    m_services.sounds.play(SoundEffect::accessingFile);
    OpenPanel panel;
    panel.title = localizedText("panel_open_title");
    panel.folder = m_services.defaults.text(lastInputDirKey).value_or("");
    panel.contentTypes = videoTypes();
    m_services.panels.open(panel, whileAlive([this](const std::optional<std::string>& path) {
                               if (path) setInput(URL::forFile(*path));
                           }));
}

void ConverterViewModel::setInput(const URL& url) {
    if (!url.isLocalFile()) return refuse(url);
    const URL input = url.standardizedFileURL();
    const std::string path = input.path();
    // The waiting start was for the previous video.
    if (isWaiting()) withdrawStart("status_ready");
    m_services.defaults.set(lastInputDirKey, folderOf(path));
    const bool isAnother = m_inputURL && m_inputURL != input;
    publishInput(input);
    if (!m_outputURL) {
        publishOutput(URL::forFile(outputBeside(path)));
        m_outputWasUserSelected = false;
    } else if (isAnother && !m_outputWasUserSelected) {
        publishOutput(URL::forFile(
            freeOutputBeside(path, [this](const std::string& place) { return isTaken(place); })));
    }
    publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
    setLastError({});
    appendLog(localizedText("log_input_format", {path}));
    applyAutoTitle(path);
    analyzeSource(input);
}

void ConverterViewModel::refuse(const URL& url) {
    const std::string text = localizedText("error_not_local_format", {url.text()});
    setLastError(text);
    appendLog(localizedText("log_error_format", {text}));
}

/// Returns whether a file exists at `path` or a run will create one there.
bool ConverterViewModel::isTaken(const std::string& path) const {
    const auto writesThere = [&](const std::optional<Run>& run) { return run && run->output.path() == path; };
    return files::kindOf(path) || writesThere(m_activeRun) || writesThere(m_waitingRun);
}

void ConverterViewModel::applyAutoTitle(const std::string& path) {
    const std::string name = proposedTitle(path);
    const std::string& title = m_settings.value().title;
    const std::string_view current = trimmed(title);
    if (!current.empty() && current != "Untitled" && current != m_lastAutoTitle) return;
    m_lastAutoTitle = name;
    m_settings.setTitle(QString::fromStdString(name));
}

void ConverterViewModel::analyzeSource(const URL& url) {
    if (m_analysis) m_analysis->cancel();
    auto deliver = whileAlive([this, number = ++m_analysisNumber](const Analysis& analysis) {
        if (number == m_analysisNumber) applyAnalysis(analysis);
    });
    m_analysis = m_services.tasks.start(
        TaskPriority::userInitiated, [url, deliver, &media = m_services.media,
                                      &mainActor = m_services.mainActor](const std::stop_token& token) {
            Analysis analysis;
            try {
                const auto asset = media.open(url.path(), [token] { return token.stop_requested(); });
                if (!asset->videoTracks().empty()) {
                    analysis.info = zeb::sourceInfo(asset->videoTracks().front());
                    analysis.tracks = audioTracks(asset->soundTracks());
                }
            } catch (...) {
                analysis.failure = currentErrorText();
            }
            mainActor.post([deliver, analysis]() mutable { deliver(analysis); });
        });
}

void ConverterViewModel::applyAnalysis(const Analysis& analysis) {
    m_analysis.reset();
    if (analysis.failure) {
        setLastError(localizedText("error_source_analyze_format", {*analysis.failure}));
        appendLog(localizedText("log_analysis_error_format", {*analysis.failure}));
        if (isWaiting()) withdrawStart("status_error");
        return;
    }
    publish(m_sourceInfo, analysis.info, &ConverterViewModel::sourceInfoChanged);
    publish(m_availableAudioTracks, analysis.tracks, &ConverterViewModel::availableAudioTracksChanged);
    if (!analysis.info) {
        if (!isWaiting()) return;
        const std::string text = errorText(ZEBConverterError::noVideoTrack());
        setLastError(text);
        appendLog(localizedText("log_error_format", {text}));
        return withdrawStart("status_error");
    }

    const SourceInfo& source = *analysis.info;
    adaptSoundSettings();
    applyAutoSettings(source.width, source.height, source.fps);
    appendLog(localizedText("log_source_format", {std::int64_t{source.width}, std::int64_t{source.height},
                                                  std::int64_t{source.fps}}));
    const auto tracks = static_cast<std::int64_t>(m_availableAudioTracks.size());
    if (tracks > 0) appendLog(localizedText("log_audio_tracks_format", {tracks}));
    beginWaitingStart();
}

void ConverterViewModel::adaptSoundSettings() {
    Settings settings = m_settings.value();
    if (m_availableAudioTracks.empty()) {
        m_hasSwitchedSoundOff |= settings.includeAudio;
        if (settings.audioChannels != 0) m_channelsBefore = settings.audioChannels;
        settings.includeAudio = false;
        settings.audioChannels = 0;
        settings.audioTrackIndex = 0;
    } else {
        if (std::exchange(m_hasSwitchedSoundOff, false)) settings.includeAudio = true;
        settings.audioChannels = std::exchange(m_channelsBefore, {}).value_or(settings.audioChannels);
        if (settings.includeAudio && settings.audioChannels == 0) settings.audioChannels = 2;
        if (settings.audioTrackIndex >= static_cast<int>(m_availableAudioTracks.size()))
            settings.audioTrackIndex = 0;
    }
    m_isAdaptingSound = true;
    m_settings.setValue(settings);
    m_isAdaptingSound = false;
}

/// Handles a change of the sound option by the user.
void ConverterViewModel::soundSwitched() {
    if (m_isAdaptingSound) return;
    m_hasSwitchedSoundOff = false;
    if (m_settings.includeAudio() && m_settings.audioChannels() == 0) m_settings.setAudioChannels(2);
}

/// Replaces a typed frame rate when the rate of the video is selected.
void ConverterViewModel::takeSourceRate() {
    if (!m_settings.fpsFromSource()) return;
    if (m_sourceInfo) m_lastAutoFPS = proposedRate(m_sourceInfo->fps);
    m_settings.setFps(m_lastAutoFPS.value_or(Settings().fps));
}

void ConverterViewModel::applyAutoSettings(int width, int height, int fps) {
    const Settings defaults;
    Settings settings = m_settings.value();
    if (settings.fpsFromSource && settings.fps == m_lastAutoFPS.value_or(defaults.fps)) {
        settings.fps = proposedRate(fps);
        m_lastAutoFPS = settings.fps;
    }
    const bool hasProposed = m_lastAutoWidth && m_lastAutoHeight;
    const int untouchedWidth = hasProposed ? *m_lastAutoWidth : defaults.width;
    const int untouchedHeight = hasProposed ? *m_lastAutoHeight : defaults.height;
    if (settings.width == untouchedWidth && settings.height == untouchedHeight) {
        settings.width = proposedSide(width);
        settings.height = proposedSide(height);
        m_lastAutoWidth = settings.width;
        m_lastAutoHeight = settings.height;
    }
    m_settings.setValue(settings);
}

// MARK: The output

void ConverterViewModel::chooseOutput() {
    if (!m_inputURL) return;
    m_services.sounds.play(SoundEffect::accessingFile);
    SavePanel panel;
    panel.title = localizedText("panel_save_title");
    panel.folder = m_services.defaults.text(lastOutputDirKey).value_or("");
    if (panel.folder.empty()) panel.folder = folderOf(m_inputURL->path());
    panel.proposedName = proposedOutputName(m_settings.value().title, m_inputURL->path());
    panel.contentTypes = {{ContentType::filenameExtension, movieExtension}};
    m_services.panels.save(panel, whileAlive([this](const std::optional<std::string>& path) {
                               if (!path) return;
                               publish(m_playableOutputURL, {},
                                       &ConverterViewModel::playableOutputURLChanged);
                               takeOutput(*path, URL::forFile(*path));
                               playReadySoundIfNeeded();
                           }));
}

/// Takes the output path that the user picked.
void ConverterViewModel::takeOutput(const std::string& path, const URL& url) {
    publishOutput(url);
    m_outputWasUserSelected = true;
    emit outputChosen();
    setLastError({});
    appendLog(localizedText("log_output_format", {path}));
    m_services.defaults.set(lastOutputDirKey, folderOf(path));
}

void ConverterViewModel::playReadySoundIfNeeded() {
    if (!m_inputURL || !m_outputURL) return;
    const std::string signature = m_inputURL->path() + '\n' + m_outputURL->path();
    if (signature == m_lastReadySoundSignature) return;
    m_lastReadySoundSignature = signature;
    m_services.sounds.play(SoundEffect::programLoadedAndReady);
}

/// Calls `answer`, possibly later, with whether the output can be written; asks the user for another path if
/// necessary.
void ConverterViewModel::ensureWritableOutput(const URL& output, std::function<void(bool)> answer) {
    if (m_outputWasUserSelected || writeTest(folderOf(output.path()))) return answer(true);

    m_services.sounds.play(SoundEffect::accessingFile);
    SavePanel panel;
    panel.title = localizedText("panel_save_title");
    panel.folder = folderOf(output.path());
    panel.proposedName = std::filesystem::path(output.path()).filename().string();
    panel.contentTypes = {{ContentType::filenameExtension, movieExtension}};
    m_services.panels.save(
        panel, whileAlive([this, answer = std::move(answer)](const std::optional<std::string>& path) {
            if (path) {
                const URL place = URL::forFile(*path).standardizedFileURL();
                takeOutput(place.path(), place);
            } else {
                setStatus("status_ready");
                appendLog(localizedText("log_cancel_requested"));
            }
            answer(path.has_value());
        }));
}

// MARK: Runs

bool ConverterViewModel::canStart() const {
    return !m_isRunning && !isWaiting() && m_inputURL && m_outputURL;
}

void ConverterViewModel::start() {
    if (m_isAskingForOutput) return;
    startLater([this] { startNow(); });
}

void ConverterViewModel::startLater(std::function<void()> begin, std::function<bool()> isReady) {
    if (!canStart()) return;
    if (!m_analysis && isReady()) return begin();
    setWaitingStart(WaitingStart{std::move(begin), std::move(isReady)});
    setStatus("status_waiting");
}

void ConverterViewModel::beginWaitingStart() {
    if (!m_waitingStart || m_analysis || !m_waitingStart->isReady()) return;
    const auto begin = m_waitingStart->begin;
    withdrawStart("status_ready");
    begin();
}

void ConverterViewModel::withdrawStart(const char* statusKey) {
    setWaitingStart({});
    setStatus(statusKey);
}

void ConverterViewModel::startNow() {
    m_isAskingForOutput = true;
    ensureWritableOutput(*m_outputURL, [this, input = m_inputURL](bool isWritable) {
        m_isAskingForOutput = false;
        // Ignore the start if the input changed while the panel was open.
        if (isWritable && m_inputURL == input) startLater([this] { beginRun(); });
    });
}

void ConverterViewModel::beginRun() {
    Run run{++m_runNumber, *m_inputURL, *m_outputURL, m_settings.value()};
    // The user has already confirmed replacing the existing file. A job that is still ending may have moved
    // that file aside.
    const bool inherits = m_activeRun && isSamePlace(m_activeRun->output, run.output) &&
                          m_activeRun->existing == OutputTerms::Existing::replace;
    if (inherits || files::kindOf(run.output.path())) run.existing = OutputTerms::Existing::replace;
    m_services.sounds.play(SoundEffect::programInProgress);
    setRunning(true);
    publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
    publish(m_progress, 0.0, &ConverterViewModel::progressChanged);
    setStatus("status_starting");
    setLastError({});
    // This run replaces the unfinished movie, so the question about it is obsolete.
    if (m_cancelledOutputPendingDeletion && isSamePlace(*m_cancelledOutputPendingDeletion, run.output)) {
        logPrevious(*m_pendingOutput, true);
        settlePendingOutput();
    }
    appendLog(localizedText("log_separator"));
    appendLog(localizedText("log_start_format", {dateText(m_services.clock.date())}));
    if (m_activeRun) {
        m_waitingRun = run;
    } else {
        launch(run);
    }
}

void ConverterViewModel::launch(const Run& run) {
    m_activeRun = run;
    const auto reports = std::make_shared<RunReports>();
    auto taken = whileAlive([this, reports, number = run.number] { takeReports(number, *reports); });
    auto ended = whileAlive([this, reports, run](const std::optional<Failure>& failure) {
        takeReports(run.number, *reports);
        if (!failure) {
            runFinished(run);
        } else {
            runFailed(run, *failure);
        }
        runEnded(run);
    });
    m_task = m_services.tasks.start(
        TaskPriority::userInitiated,
        [run, reports, taken, ended, alive = std::weak_ptr(m_alive), convert = m_services.convert,
         &scope = m_services.scope, &mainActor = m_services.mainActor](const std::stop_token& token) {
            if (alive.expired()) return;
            auto inputAccess = std::make_shared<ScopedAccess>(scope, run.input.path());
            auto outputAccess = std::make_shared<ScopedAccess>(scope, run.output.path());
            ConversionCallbacks callbacks;
            callbacks.isCancelled = [token] { return token.stop_requested(); };
            callbacks.progress = [&](const std::string& text, double fraction) {
                if (reports->add(text, fraction)) mainActor.post(taken);
            };
            callbacks.warned = [&](const std::string& text) {
                if (reports->add(text)) mainActor.post(taken);
            };
            const auto output = std::make_shared<OutputPlace>(
                run.output.path(), OutputTerms{run.existing, OutputTerms::MissingFolder::refuse});
            std::optional<Failure> failure;
            try {
                convert(run.input.path(), *output, run.settings, callbacks);
            } catch (...) {
                failure = {isCancellation(std::current_exception()), currentErrorText(), output, false, {}};
                failure->leavesMovie = leavesMovie(*output, failure->wasCancelled);
                failure->replaced = output->previousPath();
                if (!failure->leavesMovie) putBackQuietly(*output);
            }
            // Keep the access permissions until the end has been handled; the last owner releases them.
            mainActor.post([ended, failure, inputAccess = std::move(inputAccess),
                            outputAccess = std::move(outputAccess)]() mutable { ended(failure); });
        });
}

void ConverterViewModel::cancel() {
    if (m_task) m_task->cancel();
    m_task.reset();
    m_waitingRun.reset();
    withdrawStart("status_cancelled");
    appendLog(localizedText("log_cancel_requested"));
    publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
    setRunning(false);
    m_services.sounds.play(SoundEffect::deactivationComplete);
}

void ConverterViewModel::takeReports(RunNumber number, RunReports& reports) {
    RunReports::Batch batch = reports.take();
    if (batch.lines.empty()) return;
    // After a cancel the status stays "cancelled" until the job has ended.
    if (isCurrent(number) && m_task) {
        publish(m_progress, batch.fraction, &ConverterViewModel::progressChanged);
        publish(m_statusText, batch.lines.back(), &ConverterViewModel::statusTextChanged);
    }
    appendLogLines(std::move(batch.lines));
}

void ConverterViewModel::runFinished(const Run& run) {
    if (!isCurrent(run.number)) return;
    publish(m_progress, 1.0, &ConverterViewModel::progressChanged);
    setStatus("status_finished");
    appendLog(localizedText("log_finished"));
    publish(m_playableOutputURL, std::optional(run.output), &ConverterViewModel::playableOutputURLChanged);
    setRunning(false);
    m_services.sounds.play(SoundEffect::transferComplete);
}

void ConverterViewModel::runFailed(const Run& run, const Failure& failure) {
    if (isCurrent(run.number)) {
        if (failure.wasCancelled) {
            setLastError({});
            setStatus("status_cancelled");
        } else {
            setLastError(failure.text);
            setStatus("status_error");
        }
    }
    if (!failure.wasCancelled) appendLog(localizedText("log_error_format", {failure.text}));
    offerPartialFile(run, failure);
    if (isCurrent(run.number)) {
        publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
        setRunning(false);
    }
}

void ConverterViewModel::offerPartialFile(const Run& run, const Failure& failure) {
    const bool wasSetAside = !failure.replaced.empty();
    // `m_waitingRun` is the only possible later run: it begins when this one has ended.
    if (!failure.leavesMovie || (m_waitingRun && isSamePlace(m_waitingRun->output, run.output)))
        return logPrevious(*failure.output, wasSetAside);
    m_pendingOutput = failure.output;
    m_pendingRunHasFailed = !failure.wasCancelled;
    publish(m_cancelledOutputPendingDeletion, std::optional(run.output),
            &ConverterViewModel::cancelledOutputPendingDeletionChanged);
}

/// Logs the location of the movie that was to be replaced.
void ConverterViewModel::logPrevious(const OutputPlace& output, bool wasSetAside) {
    if (!output.previousPath().empty()) {
        appendLog(localizedText("log_previous_kept_format", {output.previousPath()}));
    } else if (wasSetAside) {
        appendLog(localizedText("log_previous_restored_format", {output.path()}));
    }
}

/// Closes the question about an unfinished movie.
void ConverterViewModel::settlePendingOutput() {
    m_pendingOutput.reset();
    publish(m_cancelledOutputPendingDeletion, {}, &ConverterViewModel::cancelledOutputPendingDeletionChanged);
}

/// Starts the waiting run after the job of `run` has ended.
void ConverterViewModel::runEnded(const Run& run) {
    m_activeRun.reset();
    if (isCurrent(run.number)) m_task.reset();
    if (const auto next = std::exchange(m_waitingRun, {})) launch(*next);
}

// MARK: The unfinished movie of a cancelled run

void ConverterViewModel::keepCancelledOutput() {
    if (!m_cancelledOutputPendingDeletion) return;
    appendLog(localizedText("log_cancelled_output_kept_format", {m_cancelledOutputPendingDeletion->path()}));
    logPrevious(*m_pendingOutput, true);
    settlePendingOutput();
}

void ConverterViewModel::deleteCancelledOutput() {
    if (!m_cancelledOutputPendingDeletion) return;
    const std::string path = m_cancelledOutputPendingDeletion->path();
    const std::shared_ptr<OutputPlace> output = m_pendingOutput;
    const bool wasSetAside = !output->previousPath().empty();
    const bool isThere = files::kindOf(path).has_value();
    settlePendingOutput();
    try {
        const bool isOwn = output->isOwn();
        output->putBack();
        if (isThere && !isOwn) throw OutputError(OutputError::Case::replaced, path);
        if (isThere) appendLog(localizedText("log_cancelled_output_deleted_format", {path}));
    } catch (const std::exception&) {
        const std::string text = localizedText("error_delete_cancelled_output_format", {currentErrorText()});
        setLastError(text);
        appendLog(localizedText("log_error_format", {text}));
    }
    logPrevious(*output, wasSetAside);
}

}  // namespace zeb
