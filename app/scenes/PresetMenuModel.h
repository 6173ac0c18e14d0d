#pragma once

#include <QtQml/qqmlregistration.h>
#include <QObject>
#include <QStringList>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"

namespace zeb {

/// The Presets menu: the names of the user's presets and the actions of the items. Main thread.
class PresetMenuModel final : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one")
    Q_PROPERTY(QStringList builtInTitles READ builtInTitles CONSTANT)
    Q_PROPERTY(QStringList userPresetNames READ userPresetNames NOTIFY userPresetNamesChanged)

public:
    /// Defaults and notification centre outlive the model.
    PresetMenuModel(UserDefaults& defaults, NotificationCenter& notifications, QObject* parent = nullptr);

    QStringList builtInTitles() const;
    QStringList userPresetNames() const { return m_userPresetNames; }

    /// Requests the main window to use the size of a preset, by index in the menu.
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
