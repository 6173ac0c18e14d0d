#include "player/window/PlayerSheetModel.h"

#include <algorithm>
#include <utility>

#include "codec/Mode32Interpretation.h"
#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"

namespace zeb {

QString oneLine(QString text) {
    constexpr QStringView lineEnds = u"\n\r\v\f\u0085\u2028\u2029";
    for (QChar& character : text) {
        if (lineEnds.contains(character)) character = u' ';
    }
    return text;
}

PlayerSheetModel::PlayerSheetModel(std::string path, PlayerServices services, UserDefaults& defaults,
                                   NotificationCenter& notifications, Actions actions, QObject* parent)
    : QObject(parent),
      m_path(std::move(path)),
      m_defaults(defaults),
      m_actions(std::move(actions)),
      m_model(std::move(services)) {
    connect(&m_model, &ZEBPlayerModel::statusTextChanged, this, &PlayerSheetModel::statusLineChanged);
    connect(&m_model, &ZEBPlayerModel::displayedFrameIndexChanged, this, [this] {
        if (!m_isScrubbing) m_scrubFrame = static_cast<double>(m_model.displayedFrameIndex());
        emit positionChanged();
    });
    connect(&m_model, &ZEBPlayerModel::totalFramesChanged, this, &PlayerSheetModel::positionChanged);
    connect(&m_model, &ZEBPlayerModel::fpsChanged, this, &PlayerSheetModel::positionChanged);
    connect(&m_model, &ZEBPlayerModel::imageChanged, this, &PlayerSheetModel::hasImageChanged);
    connect(&m_model, &ZEBPlayerModel::qlModeChanged, this, &PlayerSheetModel::modeChanged);
    m_defaultsObservation =
        notifications.observe(userDefaultsDidChangeNotification, [this](const Notification&) {
            applyStored();
            emit storedMode32Changed();
            emit storedLoopChanged();
        });
}

PlayerSheetModel::~PlayerSheetModel() = default;

// MARK: State shown by the controls

QString PlayerSheetModel::statusLine() const {
    return oneLine(m_model.statusText());
}

std::int64_t PlayerSheetModel::shownFrame() const {
    return m_isScrubbing ? static_cast<std::int64_t>(m_scrubFrame) : m_model.displayedFrameIndex();
}

QString PlayerSheetModel::timeText() const {
    const double seconds = static_cast<double>(shownFrame()) / std::max(m_model.fps(), 1);
    return QString::fromStdString(formatTime(seconds) + " / " + formatTime(m_model.durationSeconds()));
}

QString PlayerSheetModel::counterText() const {
    const std::int64_t total = std::max<std::int64_t>(m_model.totalFrames(), 1);
    const std::int64_t number = std::min(shownFrame() + 1, total);
    return QString::fromStdString(localizedText("%lld/%lld", {number, total}));
}

double PlayerSheetModel::sliderValue() const {
    return m_isScrubbing ? m_scrubFrame : static_cast<double>(m_model.displayedFrameIndex());
}

double PlayerSheetModel::sliderMaximum() const {
    return static_cast<double>(std::max<std::int64_t>(m_model.totalFrames() - 1, 1));
}

QString PlayerSheetModel::modeText() const {
    return QString::fromStdString(localizedText("Mode %lld", {std::int64_t{m_model.qlMode()}}));
}

QStringList PlayerSheetModel::mode32Labels() const {
    QStringList labels;
    for (const Mode32Interpretation interpretation : allMode32Interpretations)
        labels << QString::fromStdString(std::string(label(interpretation)));
    return labels;
}

// MARK: Stored settings

int PlayerSheetModel::storedMode32() const {
    const auto stored = mode32InterpretationFrom(m_defaults.text(mode32Key).value_or(""));
    const auto* found = std::find(allMode32Interpretations.begin(), allMode32Interpretations.end(),
                                  stored.value_or(Mode32Interpretation::rgb565LE));
    return static_cast<int>(found - allMode32Interpretations.begin());
}

void PlayerSheetModel::setStoredMode32(int index) {
    if (index < 0 || index >= static_cast<int>(allMode32Interpretations.size())) return;
    m_defaults.set(mode32Key,
                   std::string(storedValue(allMode32Interpretations.at(static_cast<std::size_t>(index)))));
}

bool PlayerSheetModel::storedLoop() const {
    return !m_defaults.object(loopKey) || m_defaults.boolean(loopKey);
}

void PlayerSheetModel::setStoredLoop(bool loops) {
    m_defaults.set(loopKey, loops);
}

void PlayerSheetModel::applyStored() {
    m_model.setMode32(allMode32Interpretations.at(static_cast<std::size_t>(storedMode32())));
    m_model.setLooping(storedLoop());
}

// MARK: Actions of the controls

bool PlayerSheetModel::movieHasChanged() const {
    return files::versionOf(m_path) != m_version;
}

void PlayerSheetModel::appear() {
    applyStored();
    m_version = files::versionOf(m_path);
    m_model.open(m_path);
    emit positionChanged();
}

void PlayerSheetModel::disappear() {
    m_model.unload();
}

void PlayerSheetModel::toBeginning() {
    if (canStepBack()) m_model.seek(0);
}

void PlayerSheetModel::stepBack() {
    if (canStepBack()) m_model.seek(m_model.displayedFrameIndex() - 1);
}

void PlayerSheetModel::playOrPause() {
    if (m_model.isPlaying()) {
        m_model.pause();
    } else {
        m_model.play();
    }
}

void PlayerSheetModel::stop() {
    m_model.pause();
    m_model.seek(0);
}

void PlayerSheetModel::stepForward() {
    if (canStepForward()) m_model.seek(m_model.displayedFrameIndex() + 1);
}

void PlayerSheetModel::toEnd() {
    if (canStepForward()) m_model.seek(std::max<std::int64_t>(m_model.totalFrames() - 1, 0));
}

void PlayerSheetModel::close() {
    if (m_actions.close) m_actions.close();
}

void PlayerSheetModel::openMaker() {
    if (m_actions.openMaker) m_actions.openMaker();
}

void PlayerSheetModel::chooseVideo() {
    if (m_actions.commands.chooseVideo) m_actions.commands.chooseVideo();
}

void PlayerSheetModel::playMovie() {
    if (m_actions.commands.playMovie) m_actions.commands.playMovie();
}

void PlayerSheetModel::showSettings() {
    if (m_actions.commands.showSettings) m_actions.commands.showSettings();
}

void PlayerSheetModel::showHelp() {
    if (m_actions.commands.showHelp) m_actions.commands.showHelp();
}

void PlayerSheetModel::toggleFullScreen(QWindow* window) {
    window->setWindowStates(window->windowStates() ^ Qt::WindowFullScreen);
}

std::vector<URL> PlayerSheetModel::moviesAmong(const QList<QUrl>& urls) const {
    std::vector<URL> movies;
    if (!m_actions.commands.openMovie) return movies;
    for (const QUrl& url : urls) {
        const auto movie = URL::parse(url.toEncoded().toStdString());
        if (movie && movie->hasExtension("zeb")) movies.push_back(*movie);
    }
    return movies;
}

bool PlayerSheetModel::takesURLs(const QList<QUrl>& urls) const {
    return !moviesAmong(urls).empty();
}

void PlayerSheetModel::takeDroppedURLs(const QList<QUrl>& urls) {
    for (const URL& movie : moviesAmong(urls))
        m_actions.commands.openMovie(movie);
}

void PlayerSheetModel::beginScrubbing() {
    if (!m_isScrubbing) {
        m_scrubFrame = static_cast<double>(m_model.displayedFrameIndex());
        m_resumeAfterScrub = m_model.isPlaying();
        if (m_resumeAfterScrub) m_model.pause();
    }
    m_isScrubbing = true;
}

void PlayerSheetModel::setScrubbing(bool isScrubbing) {
    if (isScrubbing) {
        beginScrubbing();
    } else if (m_isScrubbing) {
        endScrubbing();
    }
}

void PlayerSheetModel::scrubTo(double frame) {
    m_scrubFrame = frame;
    if (!m_isScrubbing) m_model.seek(static_cast<std::int64_t>(frame));
    emit positionChanged();
}

void PlayerSheetModel::endScrubbing() {
    const auto target = static_cast<std::int64_t>(m_scrubFrame);
    const bool resumes = std::exchange(m_resumeAfterScrub, false);
    m_isScrubbing = false;
    m_model.seek(target);
    if (resumes) m_model.play();
    emit positionChanged();
}

bool PlayerSheetModel::handleKey(int key, int modifiers) {
    constexpr auto harmless = Qt::KeypadModifier | Qt::ShiftModifier;
    if (Qt::KeyboardModifiers(modifiers) & ~Qt::KeyboardModifiers(harmless)) return false;
    switch (key) {
        case Qt::Key_Space:
            if (modifiers != Qt::NoModifier) return false;
            playOrPause();
            return true;
        case Qt::Key_Left:
        case Qt::Key_Comma:
            stepBack();
            return true;
        case Qt::Key_Right:
        case Qt::Key_Period:
            stepForward();
            return true;
        case Qt::Key_Home:
            toBeginning();
            return true;
        case Qt::Key_End:
            toEnd();
            return true;
        case Qt::Key_R:
            appear();
            return true;
        case Qt::Key_L:
            setStoredLoop(!storedLoop());
            return true;
        default:
            return false;
    }
}

}  // namespace zeb
