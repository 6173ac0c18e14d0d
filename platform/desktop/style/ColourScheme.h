#pragma once

#include <QtQml/qqmlregistration.h>
#include <QDBusVariant>
#include <QObject>

namespace zeb {

/// Whether the desktop is light or dark, followed while the program runs: the desktop portal's setting where
/// there is one (org.freedesktop.appearance, color-scheme), else what the system's palette looks like. Main
/// thread.
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
    /// By name, as the session bus connects.
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
