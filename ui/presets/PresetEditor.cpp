#include "ui/presets/PresetEditor.h"

#include <QUuid>
#include <utility>

#include "ui/presets/Preset.h"
#include "ui/presets/StoredPresets.h"

namespace zeb {

PresetEditor::PresetEditor(UserDefaults& defaults, NotificationCenter& notifications, Changes changes)
    : m_defaults(defaults),
      m_changes(std::move(changes)),
      m_defaultsObservation(notifications.observe(userDefaultsDidChangeNotification,
                                                  [this](const Notification&) { defaultsChanged(); })) {}

void PresetEditor::loadUserPresets() {
    m_stored = m_defaults.data(userPresetsKey).value_or(PropertyData());
    auto presets = decodeEditorPresets(m_stored).value_or(std::vector<UserPreset>());
    if (presets == m_userPresets) return;
    m_userPresets = std::move(presets);
    if (m_changes.listChanged) m_changes.listChanged();
}

void PresetEditor::saveUserPresets() {
    // Set before the notification, so that the observer recognises the list as known.
    m_stored = encodeUserPresets(m_userPresets).value_or(PropertyData());
    m_defaults.set(userPresetsKey, m_stored);
}

void PresetEditor::addUserPreset(const std::string& name, std::int64_t width, std::int64_t height) {
    m_userPresets.push_back(
        {QUuid::createUuid().toString(QUuid::WithoutBraces).toUpper().toStdString(), name, width, height});
    saveUserPresets();
    if (m_changes.listChanged) m_changes.listChanged();
}

void PresetEditor::deleteUserPreset(const std::string& id) {
    const auto count =
        std::erase_if(m_userPresets, [&](const UserPreset& preset) { return preset.id == id; });
    if (count == 0) return;
    saveUserPresets();
    if (m_changes.listChanged) m_changes.listChanged();
}

template <typename T>
void PresetEditor::setField(std::size_t row, T UserPreset::*field, const T& value) {
    if (row >= m_userPresets.size() || m_userPresets[row].*field == value) return;
    m_userPresets[row].*field = value;
    saveUserPresets();
    if (m_changes.rowChanged) m_changes.rowChanged(row);
}

void PresetEditor::setName(std::size_t row, const std::string& name) {
    setField(row, &UserPreset::name, name);
}

void PresetEditor::setWidth(std::size_t row, std::int64_t width) {
    setField(row, &UserPreset::width, width);
}

void PresetEditor::setHeight(std::size_t row, std::int64_t height) {
    setField(row, &UserPreset::height, height);
}

PresetSize PresetEditor::builtInSize(const BuiltInPreset& preset) const {
    return preset.size(m_defaults);
}

void PresetEditor::setBuiltInWidth(const BuiltInPreset& preset, std::int64_t width) {
    m_defaults.set(preset.widthKey, width);
}

void PresetEditor::setBuiltInHeight(const BuiltInPreset& preset, std::int64_t height) {
    m_defaults.set(preset.heightKey, height);
}

bool PresetEditor::soundEffectsEnabled() const {
    return zeb::soundEffectsEnabled(m_defaults);
}

void PresetEditor::setSoundEffectsEnabled(bool isEnabled) {
    m_defaults.set(soundEffectsEnabledKey, isEnabled);
}

void PresetEditor::defaultsChanged() {
    if (m_defaults.data(userPresetsKey).value_or(PropertyData()) != m_stored) loadUserPresets();
    if (m_changes.settingsChanged) m_changes.settingsChanged();
}

}  // namespace zeb
