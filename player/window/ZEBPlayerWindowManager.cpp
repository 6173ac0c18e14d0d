#include "player/window/ZEBPlayerWindowManager.h"

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QScreen>
#include <chrono>
#include <utility>

#include "platform/PathName.h"
#include "player/window/BringForward.h"
#include "player/window/PlayerSheetModel.h"

namespace zeb {
namespace {

void centre(QWindow& window) {
    const QRect place = window.screen()->availableGeometry();
    window.setPosition(place.center() - QPoint(window.width() / 2, window.height() / 2));
}

/// Menus, tool tips and the like go with their windows.
bool isProperWindow(const QWindow& window) {
    return window.type() == Qt::Window && window.transientParent() == nullptr;
}

}  // namespace

ZEBPlayerWindowManager::ZEBPlayerWindowManager(Services services) : m_services(std::move(services)) {
    // Where Qt cannot wait for the screen it waits 5 ms before it draws what has changed. Pictures have their
    // moments already.
    if (!qEnvironmentVariableIsSet("QT_QPA_UPDATE_IDLE_TIME")) qputenv("QT_QPA_UPDATE_IDLE_TIME", "1");
}

ZEBPlayerWindowManager::~ZEBPlayerWindowManager() {
    for (const auto& [key, window] : std::exchange(m_windows, {}))
        delete window.data();
}

void ZEBPlayerWindowManager::openPlayer(const URL& url, bool hideMaker) {
    const URL movie = url.standardizedFileURL();
    const std::string& key = movie.text();
    if (const auto found = m_windows.find(key); found != m_windows.end() && found->second) {
        bringForward(*found->second);
        if (hideMaker) hideMakerWindows(found->second);
        return;
    }
    auto* sheet =
        new PlayerSheetModel(movie.path(), m_services.player, m_services.defaults, m_services.notifications,
                             {[this, key] { closeWindow(key); }, [this] { showMaker(); }});
    QQmlComponent component(&m_services.engine, QUrl("qrc:/qt/qml/ZEBPlayer/PlayerWindow.qml"));
    auto* window = qobject_cast<QQuickWindow*>(
        component.createWithInitialProperties({{"sheetModel", QVariant::fromValue(sheet)}}));
    if (!window) qFatal("%s", qPrintable(component.errorString()));
    // The sheet goes with its window, after the items that show it.
    QObject::connect(window, &QObject::destroyed, sheet, &QObject::deleteLater);
    window->setTitle(QString::fromStdString(std::string(nameWithoutExtension(movie.path()))));
    m_windows[key] = window;
    centre(*window);
    window->show();
    bringForward(*window);
    if (hideMaker) hideMakerWindows(window);
}

void ZEBPlayerWindowManager::closeWindow(const std::string& key) {
    const auto found = m_windows.find(key);
    if (found == m_windows.end()) return;
    const QPointer<QQuickWindow> window = found->second;
    m_windows.erase(found);
    if (!window) return;
    window->close();
    window->deleteLater();
}

void ZEBPlayerWindowManager::hideMakerWindows(QQuickWindow* kept) {
    orderOutMakerWindows(kept);
    // A desktop may bring a converter window forward again while the new one is being activated.
    for (const int milliseconds : {100, 400, 900}) {
        m_services.player.mainActor.postAfter(std::chrono::milliseconds(milliseconds),
                                              [this, kept = QPointer(kept), alive = std::weak_ptr(m_alive)] {
                                                  if (alive.expired() || !kept) return;
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

void ZEBPlayerWindowManager::showMaker() {
    for (QWindow* window : QGuiApplication::topLevelWindows()) {
        if (isProperWindow(*window) && window->objectName() != playerWindowName) return bringForward(*window);
    }
    if (!m_makerWindow && m_services.makeMakerWindow) {
        m_makerWindow = m_services.makeMakerWindow();
        if (m_makerWindow) {
            m_makerWindow->setObjectName(makerWindowName);
            centre(*m_makerWindow);
        }
    }
    if (m_makerWindow) bringForward(*m_makerWindow);
}

}  // namespace zeb
