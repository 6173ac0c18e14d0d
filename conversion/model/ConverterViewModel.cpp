#include "conversion/model/ConverterViewModel.h"

#include <QDateTime>
#include <algorithm>
#include <chrono>
#include <exception>
#include <filesystem>
#include <iterator>
#include <new>
#include <utility>

#include "conversion/OutputName.h"
#include "conversion/WriteTest.h"
#include "format/ZEBConverterError.h"
#include "platform/ErrorText.h"
#include "platform/FileManager.h"
#include "platform/LocalizedText.h"
#include "platform/TextTrim.h"

namespace zeb {
namespace {

constexpr const char* movieExtension = "zeb";

std::string folderOf(const std::string& path) {
    return std::filesystem::path(path).parent_path().string();
}

bool isCancellation(const std::exception_ptr& error) {
    try {
        std::rethrow_exception(error);
    } catch (const ZEBConverterError& converterError) {
        return converterError.errorCase() == ZEBConverterError::Case::cancelled;
    } catch (...) {
        return false;
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

/// Whatever the platform grants for the time of a job.
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
    : QObject(parent), m_services(std::move(services)), m_statusText(localizedText("status_ready")) {}

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

// MARK: What the window shows

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

void ConverterViewModel::setStatus(const char* key) {
    publish(m_statusText, localizedText(key), &ConverterViewModel::statusTextChanged);
}

void ConverterViewModel::setLastError(const std::optional<std::string>& text) {
    publish(m_lastError, text, &ConverterViewModel::lastErrorChanged);
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
    m_services.pasteboard.setText(logText().toStdString());
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
    const URL input = url.standardizedFileURL();
    const std::string path = input.path();
    if (input.isFileURL()) m_services.defaults.set(lastInputDirKey, folderOf(path));
    publishInput(input);
    if (!m_outputURL && input.isFileURL()) {
        publishOutput(URL::forFile(outputBeside(path)));
        m_outputWasUserSelected = false;
    }
    publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
    setLastError({});
    appendLog(localizedText("log_input_format", {path}));
    applyAutoTitle(path);
    analyzeSource(input);
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
    auto deliver = whileAlive([this](const Analysis& analysis) { applyAnalysis(analysis); });
    m_services.tasks.start(
        TaskPriority::userInitiated, [url, deliver, &media = m_services.media,
                                      &mainActor = m_services.mainActor](const std::stop_token& token) {
            Analysis analysis;
            try {
                if (!url.isFileURL() || url.path().empty()) {
                    throw MediaError(MediaError::cannotOpen, {"error_source_not_local"});
                }
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
    if (analysis.failure) {
        setLastError(localizedText("error_source_analyze_format", {*analysis.failure}));
        appendLog(localizedText("log_analysis_error_format", {*analysis.failure}));
        return;
    }
    publish(m_sourceInfo, analysis.info, &ConverterViewModel::sourceInfoChanged);
    publish(m_availableAudioTracks, analysis.tracks, &ConverterViewModel::availableAudioTracksChanged);
    if (!analysis.info) return;

    const SourceInfo& source = *analysis.info;
    adaptSoundSettings();
    applyAutoSettings(source.width, source.height, source.fps);
    appendLog(localizedText("log_source_format", {std::int64_t{source.width}, std::int64_t{source.height},
                                                  std::int64_t{source.fps}}));
    const auto tracks = static_cast<std::int64_t>(m_availableAudioTracks.size());
    if (tracks > 0) appendLog(localizedText("log_audio_tracks_format", {tracks}));
}

void ConverterViewModel::adaptSoundSettings() {
    Settings settings = m_settings.value();
    if (m_availableAudioTracks.empty()) {
        settings.includeAudio = false;
        settings.audioChannels = 0;
        settings.audioTrackIndex = 0;
    } else {
        if (settings.includeAudio && settings.audioChannels == 0) settings.audioChannels = 2;
        if (settings.audioTrackIndex >= static_cast<int>(m_availableAudioTracks.size()))
            settings.audioTrackIndex = 0;
    }
    m_settings.setValue(settings);
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

/// The user has picked a place for the movie.
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

/// Answers, perhaps later, whether there is a place for the movie; asks for another one if need be.
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
    return !m_isRunning && m_inputURL && m_outputURL;
}

void ConverterViewModel::start() {
    if (!canStart() || m_isAskingForOutput) return;
    m_isAskingForOutput = true;
    ensureWritableOutput(*m_outputURL, [this](bool isWritable) {
        m_isAskingForOutput = false;
        if (isWritable && canStart()) beginRun();
    });
}

void ConverterViewModel::beginRun() {
    const Run run{++m_runNumber, *m_inputURL, *m_outputURL, m_settings.value()};
    m_services.sounds.play(SoundEffect::programInProgress);
    setRunning(true);
    publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
    publish(m_progress, 0.0, &ConverterViewModel::progressChanged);
    setStatus("status_starting");
    setLastError({});
    // An unfinished movie at this place is about to be replaced: there is nothing to decide any more.
    if (m_cancelledOutputPendingDeletion && isSamePlace(*m_cancelledOutputPendingDeletion, run.output)) {
        publish(m_cancelledOutputPendingDeletion, {},
                &ConverterViewModel::cancelledOutputPendingDeletionChanged);
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
    auto ended = whileAlive([this, reports, run](const std::exception_ptr& error, const std::string& text) {
        takeReports(run.number, *reports);
        if (!error) {
            runFinished(run);
        } else {
            runFailed(run, isCancellation(error), text);
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
            std::exception_ptr error;
            std::string text;
            try {
                convert(run.input.path(), run.output.path(), run.settings, callbacks);
            } catch (...) {
                error = std::current_exception();
                text = currentErrorText();
            }
            // The end is handled with access still, which goes with the last owner.
            mainActor.post([ended, error, text, inputAccess = std::move(inputAccess),
                            outputAccess = std::move(outputAccess)]() mutable { ended(error, text); });
        });
}

void ConverterViewModel::cancel() {
    if (m_task) m_task->cancel();
    m_task.reset();
    m_waitingRun.reset();
    setStatus("status_cancelled");
    appendLog(localizedText("log_cancel_requested"));
    publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
    setRunning(false);
    m_services.sounds.play(SoundEffect::deactivationComplete);
}

void ConverterViewModel::takeReports(RunNumber number, RunReports& reports) {
    RunReports::Batch batch = reports.take();
    if (batch.lines.empty()) return;
    // The status of a run that was cancelled stays "cancelled" while its job comes to its end.
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

void ConverterViewModel::runFailed(const Run& run, bool wasCancelled, const std::string& text) {
    if (isCurrent(run.number)) {
        if (wasCancelled) {
            setLastError({});
            setStatus("status_cancelled");
        } else {
            setLastError(text);
            setStatus("status_error");
        }
    }
    if (!wasCancelled) appendLog(localizedText("log_error_format", {text}));
    if (wasCancelled) offerPartialFile(run.output);
    if (isCurrent(run.number)) {
        publish(m_playableOutputURL, {}, &ConverterViewModel::playableOutputURLChanged);
        setRunning(false);
    }
}

void ConverterViewModel::offerPartialFile(const URL& output) {
    // `m_waitingRun` is the only later run that there can be: it begins when this one has ended.
    if (m_waitingRun && isSamePlace(m_waitingRun->output, output)) return;
    if (files::sizeOf(output.path()).value_or(0) == 0) return;
    publish(m_cancelledOutputPendingDeletion, std::optional(output),
            &ConverterViewModel::cancelledOutputPendingDeletionChanged);
}

/// The job of `run` is gone: the next may begin.
void ConverterViewModel::runEnded(const Run& run) {
    m_activeRun.reset();
    if (isCurrent(run.number)) m_task.reset();
    if (const auto next = std::exchange(m_waitingRun, {})) launch(*next);
}

// MARK: The unfinished movie of a cancelled run

void ConverterViewModel::keepCancelledOutput() {
    if (!m_cancelledOutputPendingDeletion) return;
    appendLog(localizedText("log_cancelled_output_kept_format", {m_cancelledOutputPendingDeletion->path()}));
    publish(m_cancelledOutputPendingDeletion, {}, &ConverterViewModel::cancelledOutputPendingDeletionChanged);
}

void ConverterViewModel::deleteCancelledOutput() {
    if (!m_cancelledOutputPendingDeletion) return;
    const std::string path = m_cancelledOutputPendingDeletion->path();
    publish(m_cancelledOutputPendingDeletion, {}, &ConverterViewModel::cancelledOutputPendingDeletionChanged);
    if (!files::kindOf(path)) return;
    try {
        files::removeFile(path);
        appendLog(localizedText("log_cancelled_output_deleted_format", {path}));
    } catch (const std::exception&) {
        const std::string text = localizedText("error_delete_cancelled_output_format", {currentErrorText()});
        setLastError(text);
        appendLog(localizedText("log_error_format", {text}));
    }
}

}  // namespace zeb
