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

/// The storage key of the settings window's presets: bytes of JSON, UTF-8, an array of objects with the keys
/// "id", "name", "width" and "height".
inline constexpr const char* userPresetsKey = "userPresetsJSON";

// All decoders are strict: they return nothing unless the bytes are an array of objects that have all four
// keys, with "id" and "name" as texts and the sides as 64-bit integers (640.0 is valid; 640.5, "640" and true
// are not). Other keys are ignored. Only `std::bad_alloc` is thrown.

/// Decodes the variant of the main window: any id.
std::optional<std::vector<UserPreset>> decodeUserPresets(std::span<const std::uint8_t> json);

/// Decodes the variant of the editor: ids are UUIDs in textual form, converted to upper case.
std::optional<std::vector<UserPreset>> decodeEditorPresets(std::span<const std::uint8_t> json);

/// Encodes presets for the decoders; returns nothing if a text is not UTF-8.
std::optional<PropertyData> encodeUserPresets(const std::vector<UserPreset>& presets);

/// Decodes records of any shape from an array of objects, each with its texts, numbers and booleans. Other
/// values in objects are ignored. Returns nothing for other JSON and for invalid JSON.
std::optional<std::vector<PropertyDictionary>> decodeRecords(std::span<const std::uint8_t> json);

/// Converts a stored value to an integer if possible. A real number is truncated. Of a text the numeric
/// characters are used ('1,280 px' is 1280), if they are Latin digits. Returns nothing for values beyond 64
/// bits, and for booleans, bytes, arrays and dictionaries.
std::optional<std::int64_t> lenientInteger(const PropertyValue& value);

/// Returns the id of a preset: `rawID` if it is not empty, otherwise an id made from name and size: 'My Clip'
/// at 640 x 480 gives 'my_clip_640x480'.
std::string makePresetID(std::string_view name, std::int64_t width, std::int64_t height,
                         const std::optional<std::string>& rawID);

/// Converts records of earlier versions and other programs to presets, in order. The name is under "name",
/// "title" or "label" (default "Preset"), the sides under "width", "w" or "presetW" and "height", "h" or
/// "presetH", the id under "id", "uuid" or "identifier". Records without sides of at least 1 are dropped.
std::vector<UserPreset> parsePresetDictionaries(const std::vector<PropertyDictionary>& records);

/// Presets from several sources, by id.
using PresetCollection = std::map<std::string, UserPreset>;

/// Adds presets with new ids. A preset with an existing id replaces the existing preset if only the existing
/// name is blank, and is dropped otherwise.
void mergePresets(PresetCollection& collection, std::vector<UserPreset> incoming);

/// Returns whether the first name precedes the second in a list for the user. A strict weak order.
using NameOrder = std::function<bool(const std::string& first, const std::string& second)>;

/// Compares independent of language: by characters, ignoring the case of Latin letters.
bool isBeforeInAnyLanguage(const std::string& first, const std::string& second);

/// Storage keys of earlier versions.
inline constexpr std::array<std::string_view, 14> legacyPresetKeys = {
    "userPresets",          "userPresetsData",          "customPresets",        "customPresetsData",
    "additionalPresets",    "additionalPresetsData",    "presets.user",         "presets.custom",
    "presetUserPresets",    "presetUserPresetsData",    "zebmaker.userpresets", "zebmaker.userpresets.data",
    "ZEBMaker.userPresets", "ZEBMaker.userPresetsData",
};

/// Reads presets from stored bytes: JSON as written by the settings window, other JSON records, or records in
/// a property list of any format. Empty for anything else.
std::vector<UserPreset> presetsInData(std::span<const std::uint8_t> bytes);

/// Returns all presets of the user, in the variant of the main window: those under the legacy keys and under
/// any key with "preset" in its name that holds bytes or an array, merged and sorted by name. Ignores
/// unreadable values; writes nothing.
std::vector<UserPreset> collectUserPresets(const UserDefaults& defaults, const NameOrder& isBefore);

/// Requests the main window to use a size: user info "width" and "height", integers.
inline constexpr std::string_view applyPresetNotification = "ZEBMaker.applyPreset";

/// Posts that notification.
void postApplyPreset(NotificationCenter& notifications, std::int64_t width, std::int64_t height);

/// Returns the presets of the settings window, in order, in the variant of the editor; empty if they cannot
/// be read.
std::vector<UserPreset> menuUserPresets(const UserDefaults& defaults);

}  // namespace zeb
