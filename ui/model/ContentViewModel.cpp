#include "ui/model/ContentViewModel.h"

#include <QCollator>
#include <QLocale>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>
#include <vector>

#include "platform/files/FileManager.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"
#include "platform/text/PathName.h"
#include "ui/model/MovieTexts.h"

namespace zeb {
namespace {

/// Returns the case-insensitive sort order of the user's language.
NameOrder localizedOrder() {
    // Without a language, an English order is still better than code point order.
    const QLocale locale = QLocale().language() == QLocale::C ? QLocale(QLocale::English) : QLocale();
    auto collator = std::make_shared<QCollator>(locale);
    collator->setCaseSensitivity(Qt::CaseInsensitive);
    return [collator](const std::string& first, const std::string& second) {
        return collator->compare(QString::fromStdString(first), QString::fromStdString(second)) < 0;
    };
}

}  // namespace

ContentViewModel::ContentViewModel(ContentServices services, QObject* parent)
    : QObject(parent),
      m_services(std::move(services)),
      m_presets(m_services.defaults, m_services.notifications, m_services.mainActor, *vm()->settings(),
                localizedOrder(),
                {.optionsChanged = [this] { emit presetsChanged(); },
                 .selectedPresetIDChanged = [this] { emit presetsChanged(); }}),
      m_forecaster(m_services.media, m_services.tasks, m_services.mainActor,
                   [this](const ForecastOutcome& outcome) {
                       m_forecastIsAwaited = false;
                       takeForecast(outcome);
                       vm()->beginWaitingStart();
                   }),
      m_targetSizeText(unknownText) {
    connectConverter();
}

ContentViewModel::~ContentViewModel() = default;

void ContentViewModel::connectConverter() {
    SettingsModel* settings = vm()->settings();
    connect(settings, &SettingsModel::widthChanged, this, [this] { m_presets.sizeChanged(); });
    connect(settings, &SettingsModel::heightChanged, this, [this] { m_presets.sizeChanged(); });
    connect(settings, &SettingsModel::qlModeNumberChanged, this, [settings] {
        if (settings->qlModeNumber() == 32) settings->setDither(false);
    });
    connect(settings, &SettingsModel::preserveAspectChanged, this, [this] {
        if (const auto& source = vm()->sourceInfo())
            vm()->applyAutoSettings(source->width, source->height, source->fps);
    });
    connect(settings, &SettingsModel::valueChanged, this, &ContentViewModel::sourceTargetTextChanged);
    connect(settings, &SettingsModel::valueChanged, this, &ContentViewModel::updateForecast);
    connect(vm(), &ConverterViewModel::sourceInfoChanged, this, &ContentViewModel::sourceTargetTextChanged);
    connect(vm(), &ConverterViewModel::sourceInfoChanged, this, &ContentViewModel::sourceChanged);
    connect(vm(), &ConverterViewModel::inputURLChanged, this, &ContentViewModel::sourceChanged);
    connect(vm(), &ConverterViewModel::outputURLChanged, this, &ContentViewModel::updateForecast);
    connect(vm(), &ConverterViewModel::outputChosen, this, [this] { m_mayReplace = sourceAndPlace(); });
    connect(vm(), &ConverterViewModel::progressChanged, this, &ContentViewModel::runAdvanced);
    connect(vm(), &ConverterViewModel::isRunningChanged, this, [this] {
        if (vm()->isRunning()) {
            runBegan();
        } else {
            runEnded();
        }
    });
    connect(vm(), &ConverterViewModel::cancelledOutputPendingDeletionChanged, this,
            &ContentViewModel::cancelledOutputQuestionChanged);
}

void ContentViewModel::appear() {
    m_presets.appear();
    emit presetsChanged();
    if (vm()->isRunning()) m_remaining.updateETA(vm()->progress(), m_services.clock.now());
    m_requests =
        m_services.appActions.observe([this](const AppActionRequest& request) { handleRequest(request); });
    if (const auto request = m_services.appActions.request()) handleRequest(*request);
}

QString ContentViewModel::versionText() const {
    return QString::fromStdString(zeb::versionText(m_services.version, m_services.build));
}

// MARK: Presets

QStringList ContentViewModel::presetTitles() const {
    QStringList titles;
    for (const PresetOption& option : m_presets.presetOptions())
        titles << QString::fromStdString(option.title);
    return titles;
}

int ContentViewModel::presetIndex() const {
    int index = 0;
    for (const PresetOption& option : m_presets.presetOptions()) {
        if (option.id == m_presets.selectedPresetID()) return index;
        ++index;
    }
    return 0;
}

void ContentViewModel::setPresetIndex(int index) {
    const std::vector<PresetOption> options = m_presets.presetOptions();
    if (index >= 0 && index < static_cast<int>(options.size()))
        m_presets.selectPreset(options[static_cast<std::size_t>(index)].id);
}

// MARK: Expected movie

QString ContentViewModel::sourceTargetText() const {
    const auto& source = vm()->sourceInfo();
    return source ? QString::fromStdString(zeb::sourceTargetText(*source, vm()->settings()->value()))
                  : QString();
}

void ContentViewModel::updateForecast() {
    if (vm()->sourceInfo() && vm()->inputURL() && vm()->outputURL()) {
        m_forecaster.update(vm()->inputURL()->path(), vm()->outputURL()->path(), vm()->settings()->value());
    } else {
        m_forecaster.clear();
        takeForecast({});
    }
}

/// Closes the questions and discards the forecast, which were for another source or an incomplete analysis.
void ContentViewModel::sourceChanged() {
    m_forecastIsAwaited = true;
    askAboutReplacing({});
    askAboutMisfit({});
    updateForecast();
}

void ContentViewModel::takeForecast(const ForecastOutcome& outcome) {
    // The analysis or the run reports the reason for a missing forecast.
    m_forecastText = outcome.forecast ? zeb::forecastText(*outcome.forecast) : "";
    m_forecastIsWarning = outcome.forecast && !outcome.forecast->fits();
    emit forecastChanged();
    if (!m_forecastIsWarning) askAboutMisfit({});
}

// MARK: Starting

void ContentViewModel::start() {
    vm()->startLater(
        [this, alive = std::weak_ptr(m_alive)] {
            if (!alive.expired()) askAndStart();
        },
        // There is no forecast without a usable source.
        [this, alive = std::weak_ptr(m_alive)] {
            return alive.expired() || !m_forecastIsAwaited || !vm()->sourceInfo();
        });
}

void ContentViewModel::askAndStart() {
    const std::string place = vm()->outputURL()->path();
    if (m_mayReplace != sourceAndPlace() && files::kindOf(place)) {
        return askAboutReplacing(QString::fromStdString(
            localizedText("replace_alert_message_format", {std::string(lastPiece(place))})));
    }
    if (m_forecastIsWarning) return askAboutMisfit(forecastText());
    startAnyway();
}

void ContentViewModel::replaceAndStart() {
    askAboutReplacing({});
    m_mayReplace = sourceAndPlace();
    start();
}

void ContentViewModel::dismissReplaceQuestion() {
    askAboutReplacing({});
}

void ContentViewModel::startAnyway() {
    askAboutMisfit({});
    vm()->start();
}

void ContentViewModel::dismissMisfitQuestion() {
    m_mayReplace.reset();
    askAboutMisfit({});
}

std::optional<std::pair<URL, URL>> ContentViewModel::sourceAndPlace() const {
    if (!vm()->inputURL() || !vm()->outputURL()) return {};
    return std::pair(*vm()->inputURL(), *vm()->outputURL());
}

void ContentViewModel::askAboutReplacing(const QString& question) {
    if (question == m_replaceQuestion) return;
    m_replaceQuestion = question;
    emit replaceQuestionChanged();
}

void ContentViewModel::askAboutMisfit(const QString& question) {
    if (question == m_misfitQuestion) return;
    m_misfitQuestion = question;
    emit misfitQuestionChanged();
}

// MARK: Run

void ContentViewModel::runBegan() {
    m_runStartedAt = m_services.clock.now();
    m_runOutput = vm()->outputURL();
    m_runSourceText = QString::fromStdString(
        localizedText("run_source_format", {std::string(lastPiece(vm()->inputURL()->path()))}));
    m_remaining.reset();
    m_targetSizeText = unknownText;
    m_services.dockProgress.update(0);
    tick(++m_runs);
    emit runSourceTextChanged();
    emit timesTextChanged();
}

void ContentViewModel::runEnded() {
    m_mayReplace.reset();  // the next run must ask again
    updateTargetSizeText();
    m_runStartedAt.reset();
    m_runSourceText.clear();
    m_remaining.reset();
    m_services.dockProgress.clear();
    emit runSourceTextChanged();
    emit timesTextChanged();
}

void ContentViewModel::runAdvanced() {
    if (vm()->isRunning()) {
        m_remaining.updateETA(vm()->progress(), m_services.clock.now());
        m_services.dockProgress.update(vm()->progress());
    } else {
        m_remaining.reset();
    }
    updateTargetSizeText();
    emit timesTextChanged();
}

/// Updates the elapsed time once a second while a run makes no progress.
void ContentViewModel::tick(std::int64_t run) {
    m_services.mainActor.postAfter(std::chrono::seconds(1), [this, run, alive = std::weak_ptr(m_alive)] {
        if (alive.expired() || run != m_runs || !m_runStartedAt) return;
        emit timesTextChanged();
        tick(run);
    });
}

void ContentViewModel::updateTargetSizeText() {
    const std::uint64_t bytes = m_runOutput ? files::sizeOf(m_runOutput->path()).value_or(0) : 0;
    m_targetSizeText = bytes == 0 ? unknownText : megabytesText(bytes);
}

std::string ContentViewModel::elapsedText() const {
    if (!m_runStartedAt) return unknownText;
    return formatDuration(std::chrono::duration<double>(m_services.clock.now() - *m_runStartedAt).count());
}

QString ContentViewModel::timesText() const {
    return QString::fromStdString(
        localizedText("eta_elapsed_size_format", {etaText(), elapsedText(), m_targetSizeText}));
}

QString ContentViewModel::cancelledOutputQuestion() const {
    const auto& output = vm()->cancelledOutputPendingDeletion();
    if (!output) return {};
    const std::string name(lastPiece(output->path()));
    std::string question = vm()->pendingRunHasFailed()
                               ? localizedText("failed_output_alert_message_format", {name})
                               : localizedText("cancelled_output_alert_message_format", {name});
    const std::string previous = vm()->pendingPreviousPath();
    if (!previous.empty())
        question += " " + localizedText("previous_output_alert_format", {std::string(lastPiece(previous))});
    return QString::fromStdString(question);
}

void ContentViewModel::dismissCancelledOutputQuestion() {
    if (vm()->cancelledOutputPendingDeletion()) vm()->keepCancelledOutput();
}

// MARK: Movies and requests

void ContentViewModel::playMovie() {
    if (const auto movie = vm()->playableOutputURL()) return openZEBFile(*movie, false);
    OpenPanel panel;
    panel.title = localizedText("play_zeb");
    // Start in the output's folder, which also contains the movies of cancelled runs.
    if (const auto& output = vm()->outputURL())
        panel.folder = std::filesystem::path(output->path()).parent_path().string();
    panel.contentTypes = {{ContentType::filenameExtension, "zeb"}};
    m_services.panels.open(panel,
                           [this, alive = std::weak_ptr(m_alive)](const std::optional<std::string>& path) {
                               if (!path) {
                                   std::puts("ZEB-Auswahl abgebrochen/fehlgeschlagen: Vorgang abgebrochen.");
                                   std::fflush(stdout);
                               } else if (!alive.expired()) {
                                   openZEBFile(URL::forFile(*path), false);
                               }
                           });
}

void ContentViewModel::openZEBFile(const URL& url, bool hideMaker) {
    if (!findsMovie(url)) return;
    m_services.sounds.play(SoundEffect::nowEstablishingDatalink);
    m_services.openPlayer(url.standardizedFileURL(), hideMaker);
}

bool ContentViewModel::findsMovie(const URL& url) {
    if (!url.isLocalFile()) {
        vm()->refuse(url);
        m_services.showConverter();
        return false;
    }
    const std::string path = url.standardizedFileURL().path();
    // The player reports why an existing file cannot be read.
    std::error_code ignored;
    if (std::filesystem::status(path, ignored).type() != std::filesystem::file_type::not_found) return true;
    // The window shows only the last of several errors, the log shows all.
    const std::string text = localizedText("error_zeb_missing_format", {path});
    vm()->setLastError(text);
    vm()->appendLog(localizedText("log_error_format", {text}));
    m_services.showConverter();
    return false;
}

void ContentViewModel::takeDroppedURLs(const QList<QUrl>& urls) {
    std::vector<URL> videos, refused;
    for (const QUrl& url : urls) {
        const auto dropped = URL::parse(url.toEncoded().toStdString());
        if (!dropped) continue;
        if (!dropped->isLocalFile()) {
            refused.push_back(*dropped);
        } else if (dropped->hasExtension("zeb")) {
            openZEBFile(*dropped, false);
        } else {
            videos.push_back(*dropped);
        }
    }
    if (!videos.empty()) m_services.appActions.post(EncodeAction{videos.back()});
    if (videos.size() > 1) sayOneVideoIsTaken(videos.back());
    for (const URL& url : refused)
        vm()->refuse(url);
}

void ContentViewModel::sayOneVideoIsTaken(const URL& taken) {
    const std::string path = taken.standardizedFileURL().path();
    vm()->showNotice(localizedText("log_one_video_format", {std::string(lastPiece(path))}));
}

void ContentViewModel::handleRequest(const AppActionRequest& request) {
    AppAction action = request.action;
    // A repeated request must not hide the window that has just been created.
    auto* play = std::get_if<PlayAction>(&action);
    if (play && request.id == m_lastRequest) play->hideMaker = false;
    m_lastRequest = request.id;
    handleAppAction(action);
}

void ContentViewModel::handleAppAction(const AppAction& action) {
    if (const auto* encode = std::get_if<EncodeAction>(&action)) {
        vm()->setInput(encode->url);
    } else if (const auto* play = std::get_if<PlayAction>(&action)) {
        openZEBFile(play->url, play->hideMaker);
    }
}

}  // namespace zeb
