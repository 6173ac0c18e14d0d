#pragma once

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "conversion/forecast/SizeForecaster.h"
#include "conversion/model/ConverterViewModel.h"
#include "platform/desktop/FilePanels.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/MainActor.h"
#include "platform/text/URL.h"
#include "ui/feedback/DockProgress.h"
#include "ui/model/AppActionRouter.h"
#include "ui/model/RemainingTime.h"
#include "ui/presets/PresetSelection.h"

namespace zeb {

/// What the main window's logic stands on. All of it outlives the model.
struct ContentServices {
    ConverterViewModel& converter;
    UserDefaults& defaults;
    NotificationCenter& notifications;
    MainActor& mainActor;
    const Clock& clock;
    const MediaLibrary& media;
    Tasks& tasks;
    FilePanels& panels;
    SoundEffects& sounds;
    DockProgress& dockProgress;
    AppActionRouter& appActions;
    /// Opens a movie in a player window; with `hideMaker` the converter window goes.
    std::function<void(const URL& url, bool hideMaker)> openPlayer;
    /// Brings the converter's window forward, so that what it says is seen.
    std::function<void()> showConverter;
    std::string version;  ///< of the program; empty when unknown
    std::string build;
};

/// What the main window does besides showing the converter: presets, estimates, requests from outside, the
/// dock's progress. Main thread.
class ContentViewModel final : public QObject {
    Q_OBJECT
    Q_PROPERTY(zeb::ConverterViewModel* vm READ vm CONSTANT)
    Q_PROPERTY(QString versionText READ versionText CONSTANT)
    Q_PROPERTY(QStringList presetTitles READ presetTitles NOTIFY presetsChanged)
    Q_PROPERTY(int presetIndex READ presetIndex WRITE setPresetIndex NOTIFY presetsChanged)
    Q_PROPERTY(QString sourceTargetText READ sourceTargetText NOTIFY sourceTargetTextChanged)
    Q_PROPERTY(QString forecastText READ forecastText NOTIFY forecastChanged)
    Q_PROPERTY(bool forecastIsWarning READ forecastIsWarning NOTIFY forecastChanged)
    Q_PROPERTY(QString runSourceText READ runSourceText NOTIFY runSourceTextChanged)
    Q_PROPERTY(QString timesText READ timesText NOTIFY timesTextChanged)
    Q_PROPERTY(QString replaceQuestion READ replaceQuestion NOTIFY replaceQuestionChanged)
    Q_PROPERTY(QString misfitQuestion READ misfitQuestion NOTIFY misfitQuestionChanged)
    Q_PROPERTY(
        QString cancelledOutputQuestion READ cancelledOutputQuestion NOTIFY cancelledOutputQuestionChanged)

public:
    explicit ContentViewModel(ContentServices services, QObject* parent = nullptr);
    ~ContentViewModel() override;

    ConverterViewModel* vm() const { return &m_services.converter; }
    QString versionText() const;

    /// The size presets, and which of them the size is.
    QStringList presetTitles() const;
    int presetIndex() const;
    void setPresetIndex(int index);

    /// Empty without a source.
    QString sourceTargetText() const;
    /// How large the movie will be; empty while unknown.
    QString forecastText() const { return QString::fromStdString(m_forecastText); }
    /// It would pass the format's 4 GiB or the free space.
    bool forecastIsWarning() const { return m_forecastIsWarning; }
    const std::string& etaText() const { return m_remaining.etaText(); }
    std::string elapsedText() const;
    const std::string& targetSizeText() const { return m_targetSizeText; }
    /// Names the file that is being converted, whatever has been chosen since; empty while no run goes on.
    QString runSourceText() const { return m_runSourceText; }
    /// Remaining and elapsed time and the size of the file, while a run goes on.
    QString timesText() const;
    /// Whether to start a run in whose place a file stands that nobody has said may go; empty when there is
    /// nothing to ask.
    QString replaceQuestion() const { return m_replaceQuestion; }
    /// Whether to start a run whose movie would pass the format's limit or the free space, and why not; empty
    /// when there is nothing to ask.
    QString misfitQuestion() const { return m_misfitQuestion; }
    /// Whether to keep the unfinished movie of a run that was cancelled or has failed; empty when there is
    /// nothing to ask.
    QString cancelledOutputQuestion() const;

    /// A window comes: reads the presets and carries the latest request out, also one that was carried out
    /// before, which then hides no converter.
    void appear();
    /// Plays the movie that was made, or asks for one.
    Q_INVOKABLE void playMovie();
    /// Starts a run, as soon as the source is analysed and its first forecast is there; before one that would
    /// replace a file or whose movie would not fit, asks first.
    Q_INVOKABLE void start();
    /// The answers to these questions.
    Q_INVOKABLE void replaceAndStart();
    Q_INVOKABLE void dismissReplaceQuestion();
    Q_INVOKABLE void startAnyway();
    Q_INVOKABLE void dismissMisfitQuestion();
    /// Files were dropped on the window: movies are played, the last of the others becomes the source, and
    /// what lies elsewhere is refused.
    Q_INVOKABLE void takeDroppedURLs(const QList<QUrl>& urls);
    /// The question about the unfinished movie was left without an answer.
    Q_INVOKABLE void dismissCancelledOutputQuestion();
    /// Says that `taken` is the only one of several videos that becomes the source.
    void sayOneVideoIsTaken(const URL& taken);
    /// Refuses a URL that names no file of this computer.
    void openZEBFile(const URL& url, bool hideMaker);
    /// Whether there is a file for a player; says so in the converter's window when there is none.
    bool findsMovie(const URL& url);
    void handleAppAction(const AppAction& action);

signals:
    void presetsChanged();
    void sourceTargetTextChanged();
    void forecastChanged();
    void runSourceTextChanged();
    void timesTextChanged();
    void replaceQuestionChanged();
    void misfitQuestionChanged();
    void cancelledOutputQuestionChanged();

private:
    /// The size as presets see it.

    void connectConverter();
    void runBegan();
    void runEnded();
    void runAdvanced();
    void tick(std::int64_t run);
    void updateTargetSizeText();
    void updateForecast();
    void sourceChanged();
    void askAndStart();
    void handleRequest(const AppActionRequest& request);
    std::optional<std::pair<URL, URL>> sourceAndPlace() const;
    void askAboutReplacing(const QString& question);
    void askAboutMisfit(const QString& question);
    void takeForecast(const ForecastOutcome& outcome);

    ContentServices m_services;
    PresetSelection m_presets;
    SizeForecaster m_forecaster;
    std::string m_forecastText;
    bool m_forecastIsWarning = false;
    bool m_forecastIsAwaited = false;  ///< the source has changed since the last one
    QString m_replaceQuestion;
    QString m_misfitQuestion;
    /// A source and the place of its movie, where what stands may go: the person has been asked, by the file
    /// panel or before the start. Ends with the run.
    std::optional<std::pair<URL, URL>> m_mayReplace;
    AppActionRouter::Observation m_requests;
    std::string m_lastRequest;  ///< id of the last one that was carried out
    RemainingTime m_remaining;
    std::optional<Clock::Instant> m_runStartedAt;
    std::optional<URL> m_runOutput;  ///< of the latest run
    std::int64_t m_runs = 0;         ///< so far
    QString m_runSourceText;
    std::string m_targetSizeText;
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace zeb
