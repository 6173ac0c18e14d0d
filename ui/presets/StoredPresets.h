#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings/NotificationCenter.h"
#include "platform/settings/PropertyValue.h"
#include "platform/settings/UserDefaults.h"
#include "ui/presets/Preset.h"

namespace zeb {

/// Where the presets of the settings window are stored, as bytes: JSON, UTF-8, an array of objects with the
/// keys "id", "name", "width" and "height".
inline constexpr const char* userPresetsKey = "userPresetsJSON";

// All decoders are strict: nothing unless the bytes are an array of objects that have all four keys, "id" and
// "name" as texts, the sides as whole numbers of 64 bits (640.0 is one, 640.5, "640" and true are none).
// Other keys are allowed. None throws anything but `std::bad_alloc`.

/// The main window's form: any id.
std::optional<std::vector<UserPreset>> decodeUserPresets(std::span<const std::uint8_t> json);

/// The editor's form: ids are UUIDs in their textual form, and come back in upper case.
std::optional<std::vector<UserPreset>> decodeEditorPresets(std::span<const std::uint8_t> json);

/// The bytes that the decoders read; nothing if a text is not UTF-8.
std::optional<PropertyData> encodeUserPresets(const std::vector<UserPreset>& presets);

/// Records of any shape: an array of objects only, each with its texts, numbers and booleans. What objects
/// hold besides is left out. Nothing for other JSON and for bytes that are none.
std::optional<std::vector<PropertyDictionary>> decodeRecords(std::span<const std::uint8_t> json);

/// A stored value as a whole number, if one can be made out. A real number loses its fraction; of a text the
/// numeric characters count ('1,280 px' is 1280), if they are Latin digits. Nothing for what lies beyond 64
/// bits, and for booleans, bytes, arrays and dictionaries.
std::optional<std::int64_t> lenientInteger(const PropertyValue& value);

/// The id of a preset: `rawID` unless it is missing or empty, else one made of name and size, 'My Clip' at
/// 640 x 480 giving 'my_clip_640x480'.
std::string makePresetID(std::string_view name, std::int64_t width, std::int64_t height,
                         const std::optional<std::string>& rawID);

/// The presets that records of earlier versions and other programs describe, in their order. The name stands
/// under "name", "title" or "label" (else it is "Preset"), the sides under "width", "w" or "presetW" and
/// "height", "h" or "presetH", the id under "id", "uuid" or "identifier". Records without sides of 1 or more
/// are dropped.
std::vector<UserPreset> parsePresetDictionaries(const std::vector<PropertyDictionary>& records);

/// Presets of several sources, by id.
using PresetCollection = std::map<std::string, UserPreset>;

/// Adds presets whose ids are new. One whose id is there replaces the preset that has it if that one's name
/// is blank and its own is not, and is dropped otherwise.
void mergePresets(PresetCollection& collection, std::vector<UserPreset> incoming);

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

/// Asks the main window to take a size over: user info "width" and "height", whole numbers.
inline constexpr std::string_view applyPresetNotification = "ZEBMaker.applyPreset";

/// Posts that notification, whether anybody listens or not.
void postApplyPreset(NotificationCenter& notifications, std::int64_t width, std::int64_t height);

/// The presets of the settings window, in their order and in the editor's form; empty if they cannot be read.
std::vector<UserPreset> menuUserPresets(const UserDefaults& defaults);

}  // namespace zeb
