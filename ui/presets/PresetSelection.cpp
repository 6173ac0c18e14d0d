#include "ui/presets/PresetSelection.h"

#include <algorithm>
#include <utility>

#include "platform/text/LocalizedText.h"
#include "ui/presets/Preset.h"
#include "ui/presets/StoredPresets.h"

namespace zeb {
namespace {

const std::int64_t* integerIn(const PropertyDictionary& userInfo, std::string_view key) {
    const auto found = userInfo.find(key);
    return found != userInfo.end() ? found->second.as<std::int64_t>() : nullptr;
}

}  // namespace

PresetSelection::PresetSelection(UserDefaults& defaults, NotificationCenter& notifications,
                                 MainActor& mainActor, SettingsModel& settings, NameOrder isBefore,
                                 Changes changes)
    : m_defaults(defaults),
      m_notifications(notifications),
      m_mainActor(mainActor),
      m_settings(settings),
      m_isBefore(std::move(isBefore)),
      m_changes(std::move(changes)),
      m_self(std::make_shared<PresetSelection*>(this)) {}

PresetSelection::~PresetSelection() = default;

std::vector<PresetOption> PresetSelection::presetOptions() const {
    std::vector<PresetOption> options = {
        {customPresetID, localizedText("preset_custom"), std::nullopt, std::nullopt}};
    for (const BuiltInPreset& preset : builtInPresets) {
        const PresetSize size = preset.size(m_defaults);
        options.push_back({std::string(preset.id), preset.title(), size.width, size.height});
    }
    for (const UserPreset& preset : m_userPresets)
        options.push_back({preset.id, preset.name, preset.width, preset.height});
    return options;
}

std::string PresetSelection::matchingPresetID(std::int64_t width, std::int64_t height) const {
    const PresetSize size{width, height};
    for (const BuiltInPreset& preset : builtInPresets) {
        if (preset.size(m_defaults) == size) return std::string(preset.id);
    }
    for (const UserPreset& preset : m_userPresets) {
        if (PresetSize{preset.width, preset.height} == size) return preset.id;
    }
    return customPresetID;
}

void PresetSelection::loadUserPresets() {
    m_userPresets = collectUserPresets(m_defaults, m_isBefore);
    if (m_changes.optionsChanged) m_changes.optionsChanged();
}

void PresetSelection::selectPreset(const std::string& id) {
    if (id == m_selectedPresetID) return;
    select(id);
    applyPreset(id);
}

void PresetSelection::applyPreset(const std::string& id) {
    if (id == customPresetID) return;
    setApplying(true);
    if (const BuiltInPreset* builtIn = findBuiltInPreset(id)) {
        const PresetSize size = builtIn->size(m_defaults);
        applySize(size.width, size.height);
    } else if (const auto preset = std::ranges::find(m_userPresets, id, &UserPreset::id);
               preset != m_userPresets.end()) {
        applySize(preset->width, preset->height);
    }
    endApplyingSoon();
}

void PresetSelection::applySize(std::int64_t width, std::int64_t height) {
    m_settings.setWidth(windowNumber(width));
    m_settings.setHeight(windowNumber(height));
}

void PresetSelection::endApplyingSoon() {
    // Runs after the work posted by observers of the size.
    m_mainActor.post([weak = std::weak_ptr(m_self)] {
        if (const auto self = weak.lock()) (*self)->setApplying(false);
    });
}

void PresetSelection::setApplying(bool isApplying) {
    m_isApplyingPreset = isApplying;
}

void PresetSelection::select(std::string id) {
    if (id == m_selectedPresetID) return;
    m_selectedPresetID = std::move(id);
    if (m_changes.selectedPresetIDChanged) m_changes.selectedPresetIDChanged();
}

void PresetSelection::selectMatching() {
    select(matchingPresetID(m_settings.width(), m_settings.height()));
}

void PresetSelection::sizeChanged() {
    if (!m_isApplyingPreset) selectMatching();
}

void PresetSelection::appear() {
    m_applyObservation = m_notifications.observe(
        applyPresetNotification,
        [this](const Notification& notification) { handleApplyPreset(notification); });
    m_defaultsObservation = m_notifications.observe(userDefaultsDidChangeNotification,
                                                    [this](const Notification&) { defaultsChanged(); });
    loadUserPresets();
    selectMatching();
}

void PresetSelection::disappear() {
    m_applyObservation = {};
    m_defaultsObservation = {};
}

void PresetSelection::handleApplyPreset(const Notification& notification) {
    const std::int64_t* width = integerIn(notification.userInfo, "width");
    const std::int64_t* height = integerIn(notification.userInfo, "height");
    if (width == nullptr || height == nullptr) return;
    setApplying(true);
    applySize(*width, *height);
    selectMatching();
    endApplyingSoon();
}

void PresetSelection::defaultsChanged() {
    loadUserPresets();
    const auto options = presetOptions();
    const bool isOffered = std::ranges::find(options, m_selectedPresetID, &PresetOption::id) != options.end();
    if (!isOffered) select(customPresetID);
    if (!m_isApplyingPreset) selectMatching();
}

}  // namespace zeb
