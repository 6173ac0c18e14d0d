#pragma once

#include <QtQml/qqmlregistration.h>
#include <QAbstractListModel>
#include <QList>
#include <QStringList>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "ui/presets/PresetEditor.h"

namespace zeb {

/// The model of presets and sounds for the settings window: one row per preset of the user, and the sizes of
/// the built-in presets in order. Main thread.
class PresetSettingsModel final : public QAbstractListModel {
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The application has one")
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QList<int> builtInWidths READ builtInWidths NOTIFY settingsChanged)
    Q_PROPERTY(QList<int> builtInHeights READ builtInHeights NOTIFY settingsChanged)
    Q_PROPERTY(
        bool soundEffectsEnabled READ soundEffectsEnabled WRITE setSoundEffectsEnabled NOTIFY settingsChanged)
    Q_PROPERTY(int leastSide READ leastSide CONSTANT)
    Q_PROPERTY(int mostBuiltInSide READ mostBuiltInSide CONSTANT)
    Q_PROPERTY(int mostUserSide READ mostUserSide CONSTANT)
    Q_PROPERTY(int sideStep READ sideStep CONSTANT)

public:
    enum Role { nameRole = Qt::UserRole, sideWidthRole, sideHeightRole };

    /// Defaults and notification centre outlive the model.
    PresetSettingsModel(UserDefaults& defaults, NotificationCenter& notifications, QObject* parent = nullptr);

    int rowCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    QHash<int, QByteArray> roleNames() const override;

    int count() const { return rowCount(); }
    QList<int> builtInWidths() const;
    QList<int> builtInHeights() const;
    bool soundEffectsEnabled() const { return m_editor.soundEffectsEnabled(); }
    void setSoundEffectsEnabled(bool isEnabled) { m_editor.setSoundEffectsEnabled(isEnabled); }

    static int leastSide() { return userSizeRange.least; }
    static int mostBuiltInSide() { return builtInSizeRange.most; }
    static int mostUserSide() { return userSizeRange.most; }
    static int sideStep() { return userSizeRange.step; }

    /// Reads the presets again; must be called when the window appears.
    Q_INVOKABLE void appear() { m_editor.loadUserPresets(); }
    Q_INVOKABLE void save() { m_editor.saveUserPresets(); }
    Q_INVOKABLE void addEmptyPreset();
    Q_INVOKABLE void add4KPreset();
    Q_INVOKABLE void removePreset(int row);
    // Setters for a row, or for a built-in preset by index. Invalid indices are ignored.
    Q_INVOKABLE void setName(int row, const QString& name);
    Q_INVOKABLE void setPresetWidth(int row, int width);
    Q_INVOKABLE void setPresetHeight(int row, int height);
    Q_INVOKABLE void setBuiltInWidth(int place, int width);
    Q_INVOKABLE void setBuiltInHeight(int place, int height);

signals:
    void countChanged();
    void settingsChanged();

private:
    void rowChanged(std::size_t row);

    PresetEditor m_editor;
};

}  // namespace zeb
