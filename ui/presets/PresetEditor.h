#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "ui/presets/Preset.h"

namespace zeb {

/// The data of the settings window: the sizes of the built-in presets, the user's presets and the sound
/// effects setting. Every change is stored at once. Main thread only.
///
/// There are no unsaved changes, so the stored list takes precedence. The editor loads it again after another
/// process has changed it, so that the next change here does not undo the other one.
class PresetEditor {
public:
    /// Callbacks for changes, called after they were stored. All may be empty.
    struct Changes {
        std::function<void()> listChanged;                ///< rows were added, removed or replaced
        std::function<void(std::size_t row)> rowChanged;  ///< the name or the size of the row
        std::function<void()> settingsChanged;            ///< built-in sizes or sound setting may differ
    };

    /// Defaults and notification centre outlive the editor.
    PresetEditor(UserDefaults& defaults, NotificationCenter& notifications, Changes changes = {});

    const std::vector<UserPreset>& userPresets() const noexcept { return m_userPresets; }

    /// Reads the list; must be called when the window appears. An unreadable list is treated as empty and is
    /// overwritten by the next change.
    void loadUserPresets();
    /// Stores the current list; empty data if a name is not UTF-8.
    void saveUserPresets();

    void addUserPreset(const std::string& name, std::int64_t width, std::int64_t height);
    /// Removes all presets with that id.
    void deleteUserPreset(const std::string& id);

    // Setters for a row, which store the list. A row that does not exist is ignored. Names may be empty or
    // duplicate; only the steppers limit sizes (`userSizeRange`).
    void setName(std::size_t row, const std::string& name);
    void setWidth(std::size_t row, std::int64_t width);
    void setHeight(std::size_t row, std::int64_t height);

    PresetSize builtInSize(const BuiltInPreset& preset) const;
    void setBuiltInWidth(const BuiltInPreset& preset, std::int64_t width);
    void setBuiltInHeight(const BuiltInPreset& preset, std::int64_t height);

    /// The default is true.
    bool soundEffectsEnabled() const;
    void setSoundEffectsEnabled(bool isEnabled);

private:
    template <typename T>
    void setField(std::size_t row, T UserPreset::*field, const T& value);
    void defaultsChanged();

    UserDefaults& m_defaults;
    Changes m_changes;
    std::vector<UserPreset> m_userPresets;
    PropertyData m_stored;  ///< the bytes last read or written
    NotificationCenter::Observation m_defaultsObservation;
};

}  // namespace zeb
