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

/// A stored number as a window can show it: those beyond an int become its nearest value.
constexpr int windowNumber(std::int64_t number) {
    return static_cast<int>(
        std::clamp<std::int64_t>(number, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

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

/// Width and height in pixels.
struct PresetSize {
    std::int64_t width = 0;
    std::int64_t height = 0;

    bool operator==(const PresetSize&) const = default;
};

/// The values that a stepper of the settings window goes through.
struct StepperRange {
    int least = 0;
    int most = 0;
    int step = 0;
};
inline constexpr StepperRange builtInSizeRange = {64, 4096, 8};
inline constexpr StepperRange userSizeRange = {64, 8192, 8};

/// A preset that is always there; its size is a setting.
struct BuiltInPreset {
    std::string_view id;
    std::string_view widthKey;  ///< in the user defaults
    std::string_view heightKey;
    PresetSize defaultSize;

    /// As shown, localised.
    std::string title() const;
    /// The stored size. A side that is not stored, or not as a number or a text that begins with one, has its
    /// default.
    PresetSize size(const UserDefaults& defaults) const;
    /// The size that the menu applies, for which a stored 0 is no size either.
    PresetSize menuSize(const UserDefaults& defaults) const;
};

inline constexpr std::array<BuiltInPreset, 3> builtInPresets = {{
    {"dvd", "presetDVDW", "presetDVDH", {720, 576}},
    {"hd", "presetHDW", "presetHDH", {1280, 720}},
    {"fullhd", "presetFHDW", "presetFHDH", {1920, 1080}},
}};

/// The built-in preset of that id; nullptr for any other id.
const BuiltInPreset* findBuiltInPreset(std::string_view id);

/// The key under which the user switches sound effects off.
inline constexpr std::string_view soundEffectsEnabledKey = "soundEffectsEnabled";

/// They are on until the user has decided otherwise.
inline bool soundEffectsEnabled(const UserDefaults& defaults) {
    return !defaults.object(soundEffectsEnabledKey) || defaults.boolean(soundEffectsEnabledKey);
}

}  // namespace zeb
