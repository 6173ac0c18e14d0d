#include "ui/presets/PresetMenu.h"

#include "ui/presets/UserPresetJSON.h"

namespace zeb {

void postApplyPreset(NotificationCenter& notifications, std::int64_t width, std::int64_t height) {
    notifications.post(applyPresetNotification, {{"width", width}, {"height", height}});
}

std::vector<UserPreset> menuUserPresets(const UserDefaults& defaults) {
    const auto bytes = defaults.data(userPresetsKey);
    return bytes ? decodeEditorPresets(*bytes).value_or(std::vector<UserPreset>())
                 : std::vector<UserPreset>();
}

}  // namespace zeb
