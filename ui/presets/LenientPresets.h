#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/settings/PropertyValue.h"
#include "ui/presets/UserPreset.h"

namespace zeb {

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

}  // namespace zeb
