#pragma once

#include <string_view>

#include "platform/settings/UserDefaults.h"

namespace zeb {

/// The key under which the user switches sound effects off.
inline constexpr std::string_view soundEffectsEnabledKey = "soundEffectsEnabled";

/// They are on until the user has decided otherwise.
inline bool soundEffectsEnabled(const UserDefaults& defaults) {
    return !defaults.object(soundEffectsEnabledKey) || defaults.boolean(soundEffectsEnabledKey);
}

}  // namespace zeb
