#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "conversion/model/ConverterServices.h"
#include "conversion/model/RunReports.h"
#include "conversion/model/SettingsModel.h"
#include "conversion/plan/AudioTrack.h"
#include "conversion/plan/SourceAnalysis.h"
#include "platform/files/OutputPlace.h"
#include "platform/text/URL.h"

namespace zeb {

/// The converter behind the main window: the chosen files, the settings, the running job and the state shown
/// by the window. Main thread.
///
/// One job runs at a time. A cancelled job continues until it detects the cancellation. A run started before
/// that counts as running and begins when the job has ended. Late reports of an earlier run only go to the
/// log, but its unfinished file is offered for deletion unless a later run writes to the same path. A movie
/// to be replaced is kept until the new one is complete.
///
/// Only the latest input is analysed: its analysis cancels the previous one, whose result is ignored. A start
/// during an analysis waits for the result.
class ConverterViewModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString inputPath READ inputPath NOTIFY inputURLChanged)
    Q_PROPERTY(QString outputPath READ outputPath NOTIFY outputURLChanged)
    Q_PROPERTY(zeb::SettingsModel* settings READ settings CONSTANT)
    Q_PROPERTY(QStringList audioTrackLabels READ audioTrackLabels NOTIFY availableAudioTracksChanged)
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY isRunningChanged)
    Q_PROPERTY(bool isWaiting READ isWaiting NOTIFY isWaitingChanged)
    Q_PROPERTY(double progress READ progress NOTIFY progressChanged)
    Q_PROPERTY(QString statusText READ statusText NOTIFY statusTextChanged)
    Q_PROPERTY(QString lastErrorText READ lastErrorText NOTIFY lastErrorChanged)
    Q_PROPERTY(QString logText READ logText NOTIFY logLinesChanged)
    Q_PROPERTY(bool canStart READ canStart NOTIFY canStartChanged)

public:
    static constexpr std::size_t maximumLogLines = RunReports::maximumLines;
    static constexpr std::string_view lastInputDirKey = "ZEBMaker.lastInputDir";
    static constexpr std::string_view lastOutputDirKey = "ZEBMaker.lastOutputDir";

    explicit ConverterViewModel(ConverterServices services, QObject* parent = nullptr);
    ~ConverterViewModel() override;

    const std::optional<URL>& inputURL() const { return m_inputURL; }
    const std::optional<URL>& outputURL() const { return m_outputURL; }
    /// The last completely written movie, until input, output or run change.
    const std::optional<URL>& playableOutputURL() const { return m_playableOutputURL; }
    SettingsModel* settings() { return &m_settings; }
    const SettingsModel* settings() const { return &m_settings; }
    const std::vector<AudioTrack>& availableAudioTracks() const { return m_availableAudioTracks; }
    const std::optional<SourceInfo>& sourceInfo() const { return m_sourceInfo; }
    bool isRunning() const { return m_isRunning; }
    /// Whether a start waits for the analysis or for its `isReady`; `cancel` withdraws it.
    bool isWaiting() const { return m_waitingStart.has_value(); }
    double progress() const { return m_progress; }  ///< 0 ... 1
    QString statusText() const { return QString::fromStdString(m_statusText); }
    const std::optional<std::string>& lastError() const { return m_lastError; }
    /// The unfinished movie of a cancelled or failed run, until the user has decided about it.
    const std::optional<URL>& cancelledOutputPendingDeletion() const {
        return m_cancelledOutputPendingDeletion;
    }
    /// Whether that run failed rather than being cancelled.
    bool pendingRunHasFailed() const { return m_pendingRunHasFailed; }
    /// Current path of the movie that the unfinished one was to replace; empty if there is none.
    std::string pendingPreviousPath() const { return m_pendingOutput ? m_pendingOutput->previousPath() : ""; }
    const std::deque<std::string>& logLines() const { return m_logLines; }

    /// Accessors for windows. An absent path or text is an empty string.
    QString inputPath() const;
    QString outputPath() const;
    QString lastErrorText() const { return QString::fromStdString(m_lastError.value_or("")); }
    QStringList audioTrackLabels() const;
    QString logText() const;  ///< the lines, separated by line feeds

    /// Whether a run could be started: there are an input and an output, no run is active and no start waits.
    bool canStart() const;

    /// Shows the open panel for a video.
    Q_INVOKABLE void chooseInput();
    /// Sets the input: proposes title and output, and analyses the video in the background. A new output is
    /// not proposed if the user has chosen one. Withdraws a waiting start. A URL that is not a local file is
    /// rejected with an error and changes nothing else.
    void setInput(const URL& url);
    /// Shows the error that `url` is not a local file.
    void refuse(const URL& url);
    /// Shows the save panel for the movie. Does nothing without an input.
    Q_INVOKABLE void chooseOutput();
    /// Starts a run, after asking for another path if the output's folder is not writable. During an analysis
    /// the start waits, as with `startLater`. Does nothing if `canStart` is false or that panel is already
    /// open.
    Q_INVOKABLE void start();
    /// Calls `begin` once no analysis is running and `isReady` returns true: at once or later. Until then
    /// `isWaiting` is true. If the analysis fails or finds no video, the start is withdrawn and an error is
    /// shown. Does nothing if `canStart` is false.
    void startLater(
        std::function<void()> begin, std::function<bool()> isReady = [] { return true; });
    /// Begins the waiting start if there is one and it no longer has to wait.
    void beginWaitingStart();
    /// Cancels the run, or withdraws the waiting start.
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void copyLog();
    Q_INVOKABLE void keepCancelledOutput();
    Q_INVOKABLE void deleteCancelledOutput();
    void appendLog(const std::string& line);

    /// Proposes size and rate of a source unless the user has set them.
    void applyAutoSettings(int width, int height, int fps);
    /// Shows an error that originates in the window.
    void setLastError(const std::optional<std::string>& text);
    /// Shows a message that is not an error: in the log, and in the status if no run is active.
    void showNotice(const std::string& text);

signals:
    void inputURLChanged();
    void outputURLChanged();
    /// The user has picked the movie's path in a file panel, possibly the same path again.
    void outputChosen();
    void playableOutputURLChanged();
    void availableAudioTracksChanged();
    void sourceInfoChanged();
    void isRunningChanged();
    void isWaitingChanged();
    void progressChanged();
    void statusTextChanged();
    void lastErrorChanged();
    void cancelledOutputPendingDeletionChanged();
    void logLinesChanged();
    void canStartChanged();

private:
    using RunNumber = std::int64_t;

    struct Analysis {
        std::optional<SourceInfo> info;  ///< empty without a video track
        std::vector<AudioTrack> tracks;
        std::optional<std::string> failure;
    };
    struct Run {
        RunNumber number = 0;
        URL input;
        URL output;
        Settings settings;
        /// An existing file at the output, when the run was requested, may be replaced.
        OutputTerms::Existing existing = OutputTerms::Existing::keep;
    };
    /// The end of an unfinished run.
    struct Failure {
        bool wasCancelled = false;
        std::string text;
        std::shared_ptr<OutputPlace> output;
        bool leavesMovie = false;  ///< an unfinished movie exists at the output
        std::string replaced;      ///< path of the movie to be replaced; empty if none
    };

    struct WaitingStart {
        std::function<void()> begin;
        std::function<bool()> isReady;
    };

    template <typename T>
    void publish(T& field, T value, void (ConverterViewModel::*changed)());
    /// Wraps `work` so that it does nothing after this model was destroyed. Main thread only.
    template <typename Work>
    auto whileAlive(Work work);
    void publishInput(const std::optional<URL>& url);
    void publishOutput(const std::optional<URL>& url);
    void setStatus(const char* key);
    void setRunning(bool isRunning);
    void setWaitingStart(std::optional<WaitingStart> start);
    void withdrawStart(const char* statusKey);
    void appendLogLines(std::deque<std::string> lines);

    bool isTaken(const std::string& path) const;
    void applyAutoTitle(const std::string& path);
    void analyzeSource(const URL& url);
    void applyAnalysis(const Analysis& analysis);
    void adaptSoundSettings();
    void soundSwitched();
    void takeSourceRate();

    void playReadySoundIfNeeded();
    void ensureWritableOutput(const URL& output, std::function<void(bool)> answer);
    void takeOutput(const std::string& path, const URL& url);
    void startNow();
    void beginRun();
    void launch(const Run& run);
    void takeReports(RunNumber number, RunReports& reports);
    void runFinished(const Run& run);
    void runFailed(const Run& run, const Failure& failure);
    void runEnded(const Run& run);
    void offerPartialFile(const Run& run, const Failure& failure);
    void settlePendingOutput();
    void logPrevious(const OutputPlace& output, bool wasSetAside);
    bool isCurrent(RunNumber number) const { return number == m_runNumber; }

    ConverterServices m_services;
    SettingsModel m_settings;
    std::optional<URL> m_inputURL;
    std::optional<URL> m_outputURL;
    std::optional<URL> m_playableOutputURL;
    std::vector<AudioTrack> m_availableAudioTracks;
    std::optional<SourceInfo> m_sourceInfo;
    bool m_isRunning = false;
    double m_progress = 0;
    std::string m_statusText;
    std::optional<std::string> m_lastError;
    std::optional<URL> m_cancelledOutputPendingDeletion;
    std::shared_ptr<OutputPlace> m_pendingOutput;  ///< of the unfinished movie
    bool m_pendingRunHasFailed = false;
    std::deque<std::string> m_logLines;

    // Values proposed by this model.
    std::optional<std::string> m_lastAutoTitle;
    std::optional<int> m_lastAutoWidth;
    std::optional<int> m_lastAutoHeight;
    std::optional<int> m_lastAutoFPS;

    // State after an analysis switched the sound off for a silent source, until the user changes the option.
    bool m_hasSwitchedSoundOff = false;
    std::optional<int> m_channelsBefore;
    bool m_isAdaptingSound = false;

    std::optional<Task> m_analysis;  ///< of the latest input, until its result has arrived
    std::int64_t m_analysisNumber = 0;
    std::optional<WaitingStart> m_waitingStart;

    std::optional<std::string> m_lastReadySoundSignature;
    bool m_outputWasUserSelected = false;
    bool m_isAskingForOutput = false;

    RunNumber m_runNumber = 0;        ///< of the latest start
    std::optional<Task> m_task;       ///< of the latest run, until it is cancelled
    std::optional<Run> m_activeRun;   ///< the run whose job has not ended
    std::optional<Run> m_waitingRun;  ///< started while an earlier job was still ending

    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace zeb
