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

/// The preset picker of the main window: what it offers, what it shows, and what choosing does to the size.
/// Main thread only.
class PresetSelection {
public:
    /// Who shows the fields hears of their changes. All may be empty.
    struct Changes {
        std::function<void()> optionsChanged;  ///< perhaps other `presetOptions`
        std::function<void()> selectedPresetIDChanged;
    };

    /// All that is handed in outlives this.
    PresetSelection(UserDefaults& defaults, NotificationCenter& notifications, MainActor& mainActor,
                    SettingsModel& settings, NameOrder isBefore = isBeforeInAnyLanguage,
                    Changes changes = {});
    ~PresetSelection();
    PresetSelection(const PresetSelection&) = delete;
    PresetSelection& operator=(const PresetSelection&) = delete;

    const std::vector<UserPreset>& userPresets() const noexcept { return m_userPresets; }
    const std::string& selectedPresetID() const noexcept { return m_selectedPresetID; }
    /// While true, changes of the size do not move the selection: between a preset's width and its height the
    /// size is nobody's.
    bool isApplyingPreset() const noexcept { return m_isApplyingPreset; }

    /// The custom size, the built-in presets, the user's presets.
    std::vector<PresetOption> presetOptions() const;
    /// The first of the presets with that size, in the options' order; "custom" if there is none.
    std::string matchingPresetID(std::int64_t width, std::int64_t height) const;

    /// Rebuilds the user's presets from every place where they may be stored.
    void loadUserPresets();
    /// The user has chosen an entry of the picker.
    void selectPreset(const std::string& id);
    /// Gives the settings the size of that preset; none for "custom" and unknown ids. Sides beyond an int
    /// become its nearest value.
    void applyPreset(const std::string& id);

    /// The window is on screen: presets and selection are brought up to date, and from now on follow what is
    /// stored and what the Presets menu asks for.
    void appear();
    /// It is not any more.
    void disappear();
    /// The settings' width, or their height, has changed.
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
    std::shared_ptr<PresetSelection*> m_self;  ///< tells work that waits whether this is still there
};

}  // namespace zeb
