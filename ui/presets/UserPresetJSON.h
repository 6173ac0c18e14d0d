#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/settings/PropertyValue.h"
#include "ui/presets/UserPreset.h"

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

}  // namespace zeb
