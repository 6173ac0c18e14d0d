#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings/UserDefaults.h"
#include "ui/presets/UserPreset.h"

namespace zeb {

/// Whether the first name stands before the second in a list that people read. A strict weak order.
using NameOrder = std::function<bool(const std::string& first, const std::string& second)>;

/// The order without a language: by characters, the case of Latin letters aside.
bool isBeforeInAnyLanguage(const std::string& first, const std::string& second);

/// Where earlier versions kept presets.
inline constexpr std::array<std::string_view, 14> legacyPresetKeys = {
    "userPresets",          "userPresetsData",          "customPresets",        "customPresetsData",
    "additionalPresets",    "additionalPresetsData",    "presets.user",         "presets.custom",
    "presetUserPresets",    "presetUserPresetsData",    "zebmaker.userpresets", "zebmaker.userpresets.data",
    "ZEBMaker.userPresets", "ZEBMaker.userPresetsData",
};

/// The presets in stored bytes: JSON as the settings window writes it, JSON records of any other kind, or
/// records in a property list of any form. Empty for anything else.
std::vector<UserPreset> presetsInData(std::span<const std::uint8_t> bytes);

/// All presets of the user's, in the main window's form: those under the legacy keys and under any key with
/// "preset" in its name that holds bytes or an array, merged and sorted by name. What cannot be read
/// contributes nothing; nothing is written.
std::vector<UserPreset> collectUserPresets(const UserDefaults& defaults, const NameOrder& isBefore);

}  // namespace zeb
