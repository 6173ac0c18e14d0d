#include "platform/desktop/style/ColourScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>
#include <QEvent>
#include <QGuiApplication>
#include <QPalette>

namespace zeb {
namespace {

constexpr const char* portalService = "org.freedesktop.portal.Desktop";
constexpr const char* portalPath = "/org/freedesktop/portal/desktop";
constexpr const char* portalInterface = "org.freedesktop.portal.Settings";
constexpr const char* appearance = "org.freedesktop.appearance";
constexpr const char* schemeKey = "color-scheme";

/// Unwraps a variant, which is wrapped once or twice, depending on the portal's version.
uint unwrapped(QVariant value) {
    while (value.canConvert<QDBusVariant>())
        value = value.value<QDBusVariant>().variant();
    return value.toUInt();
}

}  // namespace

ColourScheme::ColourScheme(QObject* parent) : QObject(parent) {
    qApp->installEventFilter(this);
    update();
    askPortal();
}

void ColourScheme::askPortal() {
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) return;
    bus.connect(portalService, portalPath, portalInterface, "SettingChanged", this,
                SLOT(portalSettingChanged(QString, QString, QDBusVariant)));
    QDBusMessage question =
        QDBusMessage::createMethodCall(portalService, portalPath, portalInterface, "Read");
    question << QString(appearance) << QString(schemeKey);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(question, 2000), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        const QDBusPendingReply<QDBusVariant> reply = *finished;
        if (!reply.isError()) takePortalValue(unwrapped(QVariant::fromValue(reply.value())));
        finished->deleteLater();
    });
}

void ColourScheme::portalSettingChanged(const QString& group, const QString& key, const QDBusVariant& value) {
    if (group == appearance && key == schemeKey) takePortalValue(unwrapped(QVariant::fromValue(value)));
}

void ColourScheme::takePortalValue(uint value) {
    m_preference = value == 1 ? Preference::dark : value == 2 ? Preference::light : Preference::none;
    update();
}

bool ColourScheme::eventFilter(QObject* watched, QEvent* event) {
    if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange) update();
    return QObject::eventFilter(watched, event);
}

void ColourScheme::update() {
    const bool paletteIsDark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    const bool isDark = m_preference == Preference::none ? paletteIsDark : m_preference == Preference::dark;
    if (isDark == m_isDark) return;
    m_isDark = isDark;
    emit isDarkChanged();
}

}  // namespace zeb
