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

/// Services used by the main window's logic. All of them outlive the model.
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
    /// Opens a movie in a player window; with `hideMaker` hides the converter window.
    std::function<void(const URL& url, bool hideMaker)> openPlayer;
    /// Brings the converter's window forward, so that its messages are visible.
    std::function<void()> showConverter;
    std::string version;  ///< of the program; empty if unknown
    std::string build;
};

/// The main window's logic besides the converter: presets, estimates, external requests and dock progress.
/// Main thread.
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

    /// The size presets, and the index of the preset that matches the size.
    QStringList presetTitles() const;
    int presetIndex() const;
    void setPresetIndex(int index);

    /// Empty without a source.
    QString sourceTargetText() const;
    /// The forecast size of the movie; empty while unknown.
    QString forecastText() const { return QString::fromStdString(m_forecastText); }
    /// Whether the forecast exceeds the format's 4 GiB or the free space.
    bool forecastIsWarning() const { return m_forecastIsWarning; }
    const std::string& etaText() const { return m_remaining.etaText(); }
    std::string elapsedText() const;
    const std::string& targetSizeText() const { return m_targetSizeText; }
    /// Names the file being converted, independent of later choices; empty if no run is active.
    QString runSourceText() const { return m_runSourceText; }
    /// Remaining and elapsed time and the size of the file during a run.
    QString timesText() const;
    /// Question shown before a run would overwrite a file that the user has not confirmed. Empty if there is
    /// none.
    QString replaceQuestion() const { return m_replaceQuestion; }
    /// Question shown before a run whose movie would exceed the format's limit or the free space, with the
    /// reason. Empty if there is none.
    QString misfitQuestion() const { return m_misfitQuestion; }
    /// Question whether to keep the unfinished movie of a cancelled or failed run; empty without one.
    QString cancelledOutputQuestion() const;

    /// Must be called when a window appears: reads the presets and handles the latest request. A request that
    /// was already handled does not hide the converter again.
    void appear();
    /// Plays the converted movie, or shows the open panel for one.
    Q_INVOKABLE void playMovie();
    /// Starts a run once the source is analysed and its first forecast is available. Asks first if the run
    /// would replace a file or the movie would not fit.
    Q_INVOKABLE void start();
    /// Answers to these questions.
    Q_INVOKABLE void replaceAndStart();
    Q_INVOKABLE void dismissReplaceQuestion();
    Q_INVOKABLE void startAnyway();
    Q_INVOKABLE void dismissMisfitQuestion();
    /// Handles files dropped on the window: plays movies, uses the last other file as the source, and rejects
    /// URLs that are not local files.
    Q_INVOKABLE void takeDroppedURLs(const QList<QUrl>& urls);
    /// Closes the question about the unfinished movie without an answer.
    Q_INVOKABLE void dismissCancelledOutputQuestion();
    /// Shows that `taken` is the only one of several videos used as the source.
    void sayOneVideoIsTaken(const URL& taken);
    /// Opens a movie in a player; rejects a URL that is not a local file.
    void openZEBFile(const URL& url, bool hideMaker);
    /// Returns whether the movie's file exists; shows an error in the converter's window if not.
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
    bool m_forecastIsAwaited = false;  ///< the source has changed since the last forecast
    QString m_replaceQuestion;
    QString m_misfitQuestion;
    /// A source and an output whose existing file may be replaced, as confirmed by the user in the file panel
    /// or before the start. Reset at the end of the run.
    std::optional<std::pair<URL, URL>> m_mayReplace;
    AppActionRouter::Observation m_requests;
    std::string m_lastRequest;  ///< id of the last handled request
    RemainingTime m_remaining;
    std::optional<Clock::Instant> m_runStartedAt;
    std::optional<URL> m_runOutput;  ///< of the latest run
    std::int64_t m_runs = 0;         ///< number of runs so far
    QString m_runSourceText;
    std::string m_targetSizeText;
    std::shared_ptr<const bool> m_alive = std::make_shared<const bool>(true);
};

}  // namespace zeb
