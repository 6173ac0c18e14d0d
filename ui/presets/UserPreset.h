#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace zeb {

/// A size that the user has given a name.
///
/// Two forms share this record. In the editor's (settings window, Presets menu) the id is a UUID in its
/// standard textual form, upper case; in the main window's it is any text.
struct UserPreset {
    std::string id;
    std::string name;        ///< may be empty, need not be unique
    std::int64_t width = 0;  ///< in pixels, like the height; as stored, so any number
    std::int64_t height = 0;

    bool operator==(const UserPreset&) const = default;
};

/// An entry of the main window's preset picker.
struct PresetOption {
    std::string id;  ///< unique in the list unless a stored preset took the name of a built-in one
    std::string title;
    std::optional<std::int64_t> width;  ///< nothing, like the height, for the custom size
    std::optional<std::int64_t> height;

    bool operator==(const PresetOption&) const = default;
};

/// The option for a size that no preset has.
inline constexpr const char* customPresetID = "custom";

}  // namespace zeb
