#include "player/window/ZEBPlayerWindowManager.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QScreen>
#include <algorithm>
#include <chrono>
#include <utility>

#include "platform/desktop/Windows.h"
#include "platform/text/PathName.h"

namespace zeb {
namespace {

/// Returns the space between a centred window and the edges of its screen.
QPoint margins(const QWindow& window) {
    const QSize room = (window.screen()->availableSize() - window.size()) / 2;
    return {room.width(), room.height()};
}

QPoint middlePlace(const QWindow& window) {
    return window.screen()->availableGeometry().topLeft() + margins(window);
}

/// Offset between two windows, so that both title bars are visible.
constexpr int step = 32;

/// Excludes menus, tool tips and other windows that belong to a window.
bool isProperWindow(const QWindow& window) {
    return window.type() == Qt::Window && window.transientParent() == nullptr;
}

}  // namespace

ZEBPlayerWindowManager::ZEBPlayerWindowManager(Services services) : m_services(std::move(services)) {
    // Without vertical synchronisation Qt waits 5 ms before it draws an update. The player already times its
    // frames.
    if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME")) qputenv("QT_QPA_UPDATE_IDLE_TIME", "1");
}

ZEBPlayerWindowManager::~ZEBPlayerWindowManager() {
    for (const auto& [key, player] : std::exchange(m_windows, {}))
        delete player.window.data();
}

void ZEBPlayerWindowManager::openPlayer(const URL& url, bool hideMaker) {
    const URL movie = url.standardizedFileURL();
    const std::string& key = movie.text();
    if (const auto found = m_windows.find(key); found != m_windows.end() && found->second.window) {
        const Player& player = found->second;
        if (player.sheet->movieHasChanged()) player.sheet->appear();
        bringForward(*player.window);
        if (hideMaker) hideMakerWindows(player.window);
        return;
    }
    auto* sheet = new PlayerSheetModel(
        movie.path(), m_services.player, m_services.defaults, m_services.notifications,
        {[this, key] { closeWindow(key); }, [this] { showMaker(); }, m_services.commands});
    QQmlComponent component(&m_services.engine, QUrl("qrc:/qt/qml/ZEBPlayer/PlayerWindow.qml"));
    auto* window = qobject_cast<QQuickWindow*>(
        component.createWithInitialProperties({{"sheetModel", QVariant::fromValue(sheet)}}));
    if (!window) qFatal("%s", qPrintable(component.errorString()));
    // Destroy the sheet after its window, whose items use it.
    QObject::connect(window, &QObject::destroyed, sheet, &QObject::deleteLater);
    window->setTitle(oneLine(QString::fromStdString(std::string(nameWithoutExtension(movie.path())))));
    window->setPosition(freePlace(*window));
    m_windows[key] = {window, sheet};
    window->show();
    bringForward(*window);
    if (hideMaker) hideMakerWindows(window);
}

/// Returns the centre of the screen, moved by as many steps as needed not to cover another player exactly.
QPoint ZEBPlayerWindowManager::freePlace(const QWindow& window) const {
    const QPoint middle = middlePlace(window);
    const QPoint furthest = margins(window);
    const auto isTaken = [this](QPoint place) {
        return std::any_of(m_windows.begin(), m_windows.end(), [place](const auto& entry) {
            const QPointer<QQuickWindow>& other = entry.second.window;
            return other && (other->position() - place).manhattanLength() < step / 2;
        });
    };
    QPoint place = middle;
    for (std::size_t steps = 1; steps <= m_windows.size() && isTaken(place); ++steps) {
        const int aside = static_cast<int>(steps) * step;
        place =
            middle + QPoint(aside % (std::max(0, furthest.x()) + 1), aside % (std::max(0, furthest.y()) + 1));
    }
    return place;
}

void ZEBPlayerWindowManager::closeWindow(const std::string& key) {
    const auto found = m_windows.find(key);
    if (found == m_windows.end()) return;
    const QPointer<QQuickWindow> window = found->second.window;
    m_windows.erase(found);
    if (!window) return;
    window->close();
    window->deleteLater();
}

void ZEBPlayerWindowManager::hideMakerWindows(QQuickWindow* kept) {
    orderOutMakerWindows(kept);
    // Some desktops raise a converter window again while the new window is being activated.
    for (const int milliseconds : {100, 400, 900}) {
        m_services.player.mainActor.postAfter(
            std::chrono::milliseconds(milliseconds),
            [this, kept = QPointer(kept), hides = std::weak_ptr(m_hidesMaker)] {
                if (hides.expired() || !kept) return;
                orderOutMakerWindows(kept);
                bringForward(*kept);
            });
    }
}

void ZEBPlayerWindowManager::orderOutMakerWindows(const QWindow* kept) {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        if (window != kept && isProperWindow(*window) && window->objectName() != playerWindowName)
            window->hide();
    }
}

void ZEBPlayerWindowManager::stopHidingMaker() {
    m_hidesMaker = std::make_shared<const bool>(true);
}

void ZEBPlayerWindowManager::showMaker() {
    stopHidingMaker();
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        if (isProperWindow(*window) && window->objectName() != playerWindowName) return bringForward(*window);
    }
    if (!m_makerWindow && m_services.makeMakerWindow) {
        m_makerWindow = m_services.makeMakerWindow();
        if (m_makerWindow) {
            m_makerWindow->setObjectName(makerWindowName);
            m_makerWindow->setPosition(middlePlace(*m_makerWindow));
        }
    }
    if (m_makerWindow) bringForward(*m_makerWindow);
}

}  // namespace zeb
