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

/// The converter behind the main window: the chosen files, the settings, the running job and all that the
/// window shows of it. Main thread.
///
/// One job runs at a time. After a cancel the job goes on until it notices; a run that is started meanwhile
/// begins when it has ended, and already counts as running. What arrives late from an earlier run goes to the
/// log only, but its unfinished file is offered for deletion unless a later run writes to the same place. A
/// movie that a run replaces stays until the new one is complete.
///
/// The latest input counts: its analysis cancels the one before, whose result is ignored. A start during an
/// analysis waits for the result.
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
    /// The last movie that was written to its end, until input, output or run change.
    const std::optional<URL>& playableOutputURL() const { return m_playableOutputURL; }
    SettingsModel* settings() { return &m_settings; }
    const SettingsModel* settings() const { return &m_settings; }
    const std::vector<AudioTrack>& availableAudioTracks() const { return m_availableAudioTracks; }
    const std::optional<SourceInfo>& sourceInfo() const { return m_sourceInfo; }
    bool isRunning() const { return m_isRunning; }
    /// A start waits, for the analysis or for its `isReady`; `cancel` withdraws it.
    bool isWaiting() const { return m_waitingStart.has_value(); }
    double progress() const { return m_progress; }  ///< 0 ... 1
    QString statusText() const { return QString::fromStdString(m_statusText); }
    const std::optional<std::string>& lastError() const { return m_lastError; }
    /// The unfinished movie of a run that was cancelled or has failed, while the user has to decide about it.
    const std::optional<URL>& cancelledOutputPendingDeletion() const {
        return m_cancelledOutputPendingDeletion;
    }
    /// Whether that run has failed, and was not cancelled.
    bool pendingRunHasFailed() const { return m_pendingRunHasFailed; }
    /// The movie that the unfinished one was to replace, under the name that it has now; empty without one.
    std::string pendingPreviousPath() const { return m_pendingOutput ? m_pendingOutput->previousPath() : ""; }
    const std::deque<std::string>& logLines() const { return m_logLines; }

    /// For windows: paths and texts that may be absent are empty then.
    QString inputPath() const;
    QString outputPath() const;
    QString lastErrorText() const { return QString::fromStdString(m_lastError.value_or("")); }
    QStringList audioTrackLabels() const;
    QString logText() const;  ///< the lines, separated by line feeds

    /// Whether a run could be started: input and output are there, none is running and no start waits.
    bool canStart() const;

    /// Asks for a video with the open panel.
    Q_INVOKABLE void chooseInput();
    /// Takes a video over: proposes output and title, and analyses it in the background. The output is
    /// proposed afresh for another video unless the person has chosen it. Withdraws a start that waits. A URL
    /// that names no file of this computer is refused: then an error is shown and nothing else changes.
    void setInput(const URL& url);
    /// Shows the error that `url` names no file of this computer.
    void refuse(const URL& url);
    /// Asks for the place of the movie; nothing happens without an input.
    Q_INVOKABLE void chooseOutput();
    /// Starts a run, after asking for another place when the output's folder cannot be written to. During an
    /// analysis the start waits, as with `startLater`. Nothing happens when `canStart` is false or that
    /// question is open.
    Q_INVOKABLE void start();
    /// Calls `begin` when no analysis is under way and `isReady` is true: at once, or later; until then
    /// `isWaiting`. An analysis that fails or finds no video withdraws the start and shows an error. Nothing
    /// happens when `canStart` is false.
    void startLater(
        std::function<void()> begin, std::function<bool()> isReady = [] { return true; });
    /// Begins the start that waits, if there is one and it need not wait any longer.
    void beginWaitingStart();
    /// Ends the run, or withdraws the start that waits.
    Q_INVOKABLE void cancel();
    Q_INVOKABLE void copyLog();
    Q_INVOKABLE void keepCancelledOutput();
    Q_INVOKABLE void deleteCancelledOutput();
    void appendLog(const std::string& line);

    /// Proposes size and rate for a source where the user has not set them.
    void applyAutoSettings(int width, int height, int fps);
    /// Shows an error of the window's own.
    void setLastError(const std::optional<std::string>& text);
    /// Tells something that is no error: in the log, and in the status while no run goes on.
    void showNotice(const std::string& text);

signals:
    void inputURLChanged();
    void outputURLChanged();
    /// The person has picked the movie's place in a file panel, perhaps the same once more.
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
        std::optional<SourceInfo> info;  ///< nothing without a video track
        std::vector<AudioTrack> tracks;
        std::optional<std::string> failure;
    };
    struct Run {
        RunNumber number = 0;
        URL input;
        URL output;
        Settings settings;
        /// A file that stood at the output when the run was asked for may be replaced.
        OutputTerms::Existing existing = OutputTerms::Existing::keep;
    };
    /// How a run has ended that was not finished.
    struct Failure {
        bool wasCancelled = false;
        std::string text;
        std::shared_ptr<OutputPlace> output;
        bool leavesMovie = false;  ///< an unfinished movie stands at the output
        std::string replaced;      ///< where the movie was put that was to be replaced; empty without one
    };

    struct WaitingStart {
        std::function<void()> begin;
        std::function<bool()> isReady;
    };

    template <typename T>
    void publish(T& field, T value, void (ConverterViewModel::*changed)());
    /// `work` such that it does nothing once this model is gone. To be called on the main thread.
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
    std::shared_ptr<OutputPlace> m_pendingOutput;  ///< of that movie
    bool m_pendingRunHasFailed = false;
    std::deque<std::string> m_logLines;

    // What this model has proposed itself.
    std::optional<std::string> m_lastAutoTitle;
    std::optional<int> m_lastAutoWidth;
    std::optional<int> m_lastAutoHeight;
    std::optional<int> m_lastAutoFPS;

    // What an analysis of a silent source has switched off, until the person changes it.
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
    std::optional<Run> m_activeRun;   ///< the one whose job has not ended
    std::optional<Run> m_waitingRun;  ///< started while an earlier job still ends

    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace zeb
