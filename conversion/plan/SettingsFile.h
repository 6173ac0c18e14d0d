#pragma once

#include <string>
#include <string_view>

#include "conversion/plan/RequestedSettings.h"

namespace zeb {

/// The JSON form of settings, for settings files, looks and queues:
///
///     { "zebSettings": 1, "mode": 4, "colours": { "kind": "natural", "tone": 1.6 }, ... }
///
/// The keys are the paths of `settingRows`; values are texts as in options, numbers, or true and false. A
/// missing key leaves a setting as it is. Unknown keys are kept and written back.

/// Reads the settings of `json` into `requested`. Throws `SettingsError`, with the path of the key: not
/// JSON, not an object, a later version, or a value of another type or out of range. `requested` is then
/// incomplete.
void readSettings(std::string_view json, RequestedSettings& requested);

/// Returns the JSON form of `requested`, indented, with a line feed at the end. Settings that the source
/// determines are left out.
std::string settingsJson(const RequestedSettings& requested);

/// Reads a settings file into `requested`. Throws `FileError`, and `SettingsError` that names the file.
void readSettingsFile(const std::string& path, RequestedSettings& requested);

}  // namespace zeb
