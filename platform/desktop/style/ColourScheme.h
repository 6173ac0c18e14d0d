#pragma once

#include <QtQml/qqmlregistration.h>
#include <QDBusVariant>
#include <QObject>

namespace zeb {

/// The desktop's colour scheme, light or dark, updated while the program runs. Source: the setting of the
/// desktop portal, if there is one (org.freedesktop.appearance, color-scheme), else the brightness of the
/// system's palette. Main thread.
class ColourScheme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool isDark READ isDark NOTIFY isDarkChanged)

public:
    explicit ColourScheme(QObject* parent = nullptr);

    bool isDark() const { return m_isDark; }

signals:
    void isDarkChanged();

private:
    /// Connected by name, as the session bus requires.
    Q_SLOT void portalSettingChanged(const QString& group, const QString& key, const QDBusVariant& value);

    void askPortal();
    void takePortalValue(uint value);
    void update();
    bool eventFilter(QObject* watched, QEvent* event) override;

    enum class Preference { none, dark, light };
    Preference m_preference = Preference::none;  ///< of the portal
    bool m_isDark = false;
};

}  // namespace zeb
