#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/UserDefaults.h"
#include "ui/presets/UserPreset.h"

namespace zeb {

/// Asks the main window to take a size over: user info "width" and "height", whole numbers.
inline constexpr std::string_view applyPresetNotification = "ZEBMaker.applyPreset";

/// Posts that notification, whether anybody listens or not.
void postApplyPreset(NotificationCenter& notifications, std::int64_t width, std::int64_t height);

/// The presets of the settings window, in their order and in the editor's form; empty if they cannot be read.
std::vector<UserPreset> menuUserPresets(const UserDefaults& defaults);

}  // namespace zeb
