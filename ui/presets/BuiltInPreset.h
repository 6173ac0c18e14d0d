#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/settings/UserDefaults.h"

namespace zeb {

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

}  // namespace zeb
