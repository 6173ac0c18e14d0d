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

/// What the settings window shows and changes: the sizes of the built-in presets, the user's presets and the
/// switch of the sound effects. Every change is stored at once. Main thread only.
///
/// Since nothing here is ever unsaved, the stored list is the true one: when somebody else has changed it
/// (another instance of the program, say) the editor takes it over, so that its own next change does not undo
/// theirs.
class PresetEditor {
public:
    /// Who shows the fields hears of their changes, after they were stored. All may be empty.
    struct Changes {
        std::function<void()> listChanged;                ///< rows came, went, or are others now
        std::function<void(std::size_t row)> rowChanged;  ///< its name or its size
        std::function<void()> settingsChanged;            ///< perhaps the built-in sizes or the switch
    };

    /// Defaults and notification centre outlive this.
    PresetEditor(UserDefaults& defaults, NotificationCenter& notifications, Changes changes = {});

    const std::vector<UserPreset>& userPresets() const noexcept { return m_userPresets; }

    /// Reads the list, when the window appears. One that cannot be read counts as empty, and is overwritten
    /// by the next change.
    void loadUserPresets();
    /// Stores the list as it is; empty data if a name is not UTF-8.
    void saveUserPresets();

    void addUserPreset(const std::string& name, std::int64_t width, std::int64_t height);
    /// Removes all presets of that id.
    void deleteUserPreset(const std::string& id);

    // Changes of a row, which store the list; a row that is not there (any more) is passed over. Names may be
    // empty or occur twice; sizes are limited by the steppers only (`userSizeRange`).
    void setName(std::size_t row, const std::string& name);
    void setWidth(std::size_t row, std::int64_t width);
    void setHeight(std::size_t row, std::int64_t height);

    PresetSize builtInSize(const BuiltInPreset& preset) const;
    void setBuiltInWidth(const BuiltInPreset& preset, std::int64_t width);
    void setBuiltInHeight(const BuiltInPreset& preset, std::int64_t height);

    /// True unless switched off.
    bool soundEffectsEnabled() const;
    void setSoundEffectsEnabled(bool isEnabled);

private:
    template <typename T>
    void setField(std::size_t row, T UserPreset::*field, const T& value);
    void defaultsChanged();

    UserDefaults& m_defaults;
    Changes m_changes;
    std::vector<UserPreset> m_userPresets;
    PropertyData m_stored;  ///< the bytes that the list was read from or written to
    NotificationCenter::Observation m_defaultsObservation;
};

}  // namespace zeb
