#include "platform/desktop/QtDockTile.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFile>
#include <QGuiApplication>
#include <QPixmap>
#include <QVariantMap>
#include <QWindow>

namespace zeb {
namespace {

/// Checks for a session bus first: connecting to a missing bus would make the bus library start one.
bool hasSessionBus() {
    if (!qEnvironmentVariableIsEmpty("DBUS_SESSION_BUS_ADDRESS")) return true;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return !folder.isEmpty() && QFile::exists(folder + "/bus");
}

/// Sets the icon of all open and future windows. A window keeps the first application icon that is set as its
/// window icon and does not follow later changes of the application icon.
void setIcons(const QIcon& icon) {
    QGuiApplication::setWindowIcon(icon);
    for (QWindow* window : QGuiApplication::topLevelWindows())
        window->setIcon(icon);
}

}  // namespace

double QtDockTile::devicePixelRatio() const {
    return qGuiApp->devicePixelRatio();  // the highest of all screens
}

void QtDockTile::show(const QImage& picture, double progress) {
    if (!m_isShown) m_normalIcon = QGuiApplication::windowIcon();
    // Every window sends its icon to the desktop again, so skip equal pictures.
    if (!m_isShown || picture != m_picture) {
        m_picture = picture;
        setIcons(QIcon(QPixmap::fromImage(picture)));
    }
    m_isShown = true;
    signalProgress(progress, true);
}

void QtDockTile::clear() {
    if (!m_isShown) return;
    m_isShown = false;
    setIcons(m_normalIcon);
    signalProgress(0, false);
}

void QtDockTile::signalProgress(double progress, bool isVisible) {
    if (!hasSessionBus()) return;
    QDBusMessage message = QDBusMessage::createSignal("/com/canonical/Unity/LauncherEntry",
                                                      "com.canonical.Unity.LauncherEntry", "Update");
    message << QStringLiteral("application://%1").arg(QLatin1String(desktopEntryName))
            << QVariantMap{{"progress", progress}, {"progress-visible", isVisible}};
    QDBusConnection::sessionBus().send(message);  // does not wait for a reply
}

}  // namespace zeb
