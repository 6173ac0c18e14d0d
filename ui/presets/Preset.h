#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

#include "platform/settings/UserDefaults.h"

namespace zeb {

/// Returns a stored number clamped to the range of int.
constexpr int windowNumber(std::int64_t number) {
    return static_cast<int>(
        std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// A named size of the user.
///
/// Two variants share this record. For the editor (settings window, Presets menu) the id is a UUID in
/// standard textual form, upper case. For the main window it is any text.
struct UserPreset {
    std::string id;
    std::string name;        ///< may be empty or duplicate
    std::int64_t width = 0;  ///< in pixels, like the height; as stored, so any number
    std::int64_t height = 0;

    bool operator==(const UserPreset&) const = default;
};

/// An entry of the main window's preset picker.
struct PresetOption {
    std::string id;  ///< unique in the list unless a stored preset has the id of a built-in preset
    std::string title;
    std::optional<std::int64_t> width;  ///< empty, like the height, for the custom size
    std::optional<std::int64_t> height;

    bool operator==(const PresetOption&) const = default;
};

/// Id of the option for a size that matches no preset.
inline constexpr const char* customPresetID = "custom";

/// Width and height in pixels.
struct PresetSize {
    std::int64_t width = 0;
    std::int64_t height = 0;

    bool operator==(const PresetSize&) const = default;
};

/// Range of a stepper in the settings window.
struct StepperRange {
    int least = 0;
    int most = 0;
    int step = 0;
};
inline constexpr StepperRange builtInSizeRange = {64, 4096, 8};
inline constexpr StepperRange userSizeRange = {64, 8192, 8};

/// A preset that always exists; its size is a setting.
struct BuiltInPreset {
    std::string_view id;
    std::string_view widthKey;  ///< in the user defaults
    std::string_view heightKey;
    PresetSize defaultSize;

    /// Returns the localised title.
    std::string title() const;
    /// Returns the stored size. A side that is not stored as a number, or as a text that begins with one, has
    /// its default.
    PresetSize size(const UserDefaults& defaults) const;
    /// Returns the size applied by the menu, where a stored 0 also means the default.
    PresetSize menuSize(const UserDefaults& defaults) const;
};

inline constexpr std::array<BuiltInPreset, 3> builtInPresets = {{
    {"dvd", "presetDVDW", "presetDVDH", {720, 576}},
    {"hd", "presetHDW", "presetHDH", {1280, 720}},
    {"fullhd", "presetFHDW", "presetFHDH", {1920, 1080}},
}};

/// Returns the built-in preset with that id; nullptr for any other id.
const BuiltInPreset* findBuiltInPreset(std::string_view id);

/// The key of the sound effects setting.
inline constexpr std::string_view soundEffectsEnabledKey = "soundEffectsEnabled";

/// Returns whether sound effects are on. The default is true.
inline bool soundEffectsEnabled(const UserDefaults& defaults) {
    return !defaults.object(soundEffectsEnabledKey) || defaults.boolean(soundEffectsEnabledKey);
}

}  // namespace zeb
