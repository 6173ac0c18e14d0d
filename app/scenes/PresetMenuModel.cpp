#include "app/scenes/PresetMenuModel.h"

#include "ui/presets/Preset.h"
#include "ui/presets/StoredPresets.h"

namespace zeb {

PresetMenuModel::PresetMenuModel(UserDefaults& defaults, NotificationCenter& notifications, QObject* parent)
    : QObject(parent),
      m_defaults(defaults),
      m_notifications(notifications),
      m_userPresetNames(storedNames()) {
    m_defaultsObservation =
        notifications.observe(userDefaultsDidChangeNotification, [this](const Notification&) {
            QStringList names = storedNames();
            if (names == m_userPresetNames) return;
            m_userPresetNames = std::move(names);
            emit userPresetNamesChanged();
        });
}

QStringList PresetMenuModel::builtInTitles() const {
    QStringList titles;
    for (const BuiltInPreset& preset : builtInPresets)
        titles << QString::fromStdString(preset.title());
    return titles;
}

QStringList PresetMenuModel::storedNames() const {
    QStringList names;
    for (const UserPreset& preset : menuUserPresets(m_defaults))
        names << QString::fromStdString(preset.name);
    return names;
}

void PresetMenuModel::applyBuiltIn(int place) {
    if (static_cast<std::size_t>(place) >= builtInPresets.size()) return;
    const PresetSize size = builtInPresets[static_cast<std::size_t>(place)].menuSize(m_defaults);
    postApplyPreset(m_notifications, size.width, size.height);
}

void PresetMenuModel::applyUserPreset(int place) {
    const std::vector<UserPreset> presets = menuUserPresets(m_defaults);
    if (static_cast<std::size_t>(place) >= presets.size()) return;
    const UserPreset& preset = presets[static_cast<std::size_t>(place)];
    postApplyPreset(m_notifications, preset.width, preset.height);
}

}  // namespace zeb
