#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "conversion/model/SettingsModel.h"
#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "platform/tasks/MainActor.h"
#include "ui/presets/Preset.h"
#include "ui/presets/StoredPresets.h"

namespace zeb {

/// The preset picker of the main window: its options, its selection and the effect of selecting on the size.
/// Main thread only.
class PresetSelection {
public:
    /// Callbacks for changes. All may be empty.
    struct Changes {
        std::function<void()> optionsChanged;  ///< `presetOptions` may have changed
        std::function<void()> selectedPresetIDChanged;
    };

    /// All arguments outlive the selection.
    PresetSelection(UserDefaults& defaults, NotificationCenter& notifications, MainActor& mainActor,
                    SettingsModel& settings, NameOrder isBefore = isBeforeInAnyLanguage,
                    Changes changes = {});
    ~PresetSelection();
    PresetSelection(const PresetSelection&) = delete;
    PresetSelection& operator=(const PresetSelection&) = delete;

    const std::vector<UserPreset>& userPresets() const noexcept { return m_userPresets; }
    const std::string& selectedPresetID() const noexcept { return m_selectedPresetID; }
    /// While true, changes of the size do not move the selection: while a preset is being applied, width and
    /// height do not match any preset.
    bool isApplyingPreset() const noexcept { return m_isApplyingPreset; }

    /// The custom size, the built-in presets, the user's presets.
    std::vector<PresetOption> presetOptions() const;
    /// Returns the id of the first preset with that size, in the order of the options; "custom" if there is
    /// none.
    std::string matchingPresetID(std::int64_t width, std::int64_t height) const;

    /// Rebuilds the user's presets from all storage keys.
    void loadUserPresets();
    /// Handles the choice of an entry by the user.
    void selectPreset(const std::string& id);
    /// Sets the size in the settings to that of the preset, clamped to int. Does nothing for "custom" and
    /// unknown ids.
    void applyPreset(const std::string& id);

    /// Must be called when the window appears: updates presets and selection, and from now on follows stored
    /// changes and requests of the Presets menu.
    void appear();
    /// Must be called when the window disappears.
    void disappear();
    /// Must be called after a change of width or height in the settings.
    void sizeChanged();

private:
    void applySize(std::int64_t width, std::int64_t height);
    void endApplyingSoon();
    void setApplying(bool isApplying);
    void select(std::string id);
    void selectMatching();
    void handleApplyPreset(const Notification& notification);
    void defaultsChanged();

    UserDefaults& m_defaults;
    NotificationCenter& m_notifications;
    MainActor& m_mainActor;
    SettingsModel& m_settings;
    NameOrder m_isBefore;
    Changes m_changes;
    std::vector<UserPreset> m_userPresets;
    std::string m_selectedPresetID = customPresetID;
    bool m_isApplyingPreset = false;
    NotificationCenter::Observation m_applyObservation;
    NotificationCenter::Observation m_defaultsObservation;
    std::shared_ptr<PresetSelection*> m_self;  ///< expires with this object, for posted work
};

}  // namespace zeb
