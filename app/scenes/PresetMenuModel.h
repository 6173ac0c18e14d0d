#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QStringList>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"

namespace zeb {

/// The Presets menu: the user's presets by their names, and what choosing an item does. Main thread.
class PresetMenuModel final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one")
    Q_PROPERTY(QStringList builtInTitles READ builtInTitles CONSTANT)
    Q_PROPERTY(QStringList userPresetNames READ userPresetNames NOTIFY userPresetNamesChanged)

public:
    /// Defaults and notification centre outlive this.
    PresetMenuModel(UserDefaults& defaults, NotificationCenter& notifications, QObject* parent = nullptr);

    QStringList builtInTitles() const;
    QStringList userPresetNames() const { return m_userPresetNames; }

    /// Asks the main window for the size of a preset, by its place in the menu.
    Q_INVOKABLE void applyBuiltIn(int place);
    Q_INVOKABLE void applyUserPreset(int place);

signals:
    void userPresetNamesChanged();

private:
    QStringList storedNames() const;

    UserDefaults& m_defaults;
    NotificationCenter& m_notifications;
    QStringList m_userPresetNames;
    NotificationCenter::Observation m_defaultsObservation;
};

}  // namespace zeb
