#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <optional>
#include <string>

#include "cli/Command.h"
#include "conversion/plan/RequestedSettings.h"
#include "platform/files/OutputPlace.h"

/// Options for the settings of a conversion, shared by the commands whose arguments are `SettingArguments`.
namespace zeb::cli {

/// The base of the arguments of a command with settings.
struct SettingArguments : RequestedSettings {
    std::optional<std::string> saveSettings;  ///< file to write the settings to
};

/// Reads a settings file into `requested`. Throws `UsageError`.
void takeSettingsFile(RequestedSettings& requested, const std::string& path);

/// The file of `--save-settings`, if requested. Errors go to the console, and the result is then false.
class SettingsOutput {
public:
    /// `force`: replace an existing file. The arguments and the console outlive the object.
    SettingsOutput(const SettingArguments& arguments, bool force, Console& console)
        : m_arguments(arguments), m_force(force), m_console(console) {}

    /// Checks that the file can be written and is not `input`. Changes nothing.
    bool check(const std::string& input) const;
    bool write() const;

private:
    OutputTerms terms() const;

    const SettingArguments& m_arguments;
    bool m_force;
    Console& m_console;
};

/// Throws `UsageError` if the requested settings contradict each other.
void checkRequest(const RequestedSettings& requested);

/// The path of a setting as a template argument.
template <std::size_t size>
struct SettingPath {
    char text[size];
    // NOLINTNEXTLINE(google-explicit-constructor): converts literals.
    constexpr SettingPath(const char (&path)[size]) { std::copy_n(path, size, text); }
};

/// Returns the option of a setting; a switch if `placeholder` is empty.
template <typename Arguments, SettingPath path>
constexpr Option settingOption(const char* names, const char* placeholder, const char* help,
                               const char* excludes = "") {
    Option option{.names = names, .placeholder = placeholder, .help = help};
    option.findExpected = [] { return settingRow(path.text).expected; };
    option.take = [](void* arguments, const std::string& text) {
        return settingRow(path.text).take(*static_cast<Arguments*>(arguments), text);
    };
    option.excludes = excludes;
    return option;
}

/// The file that the options override: before all other options of settings.
template <typename Arguments>
inline constexpr std::array settingsFileOptions = {
    Option{.names = "--settings",
           .placeholder = "FILE",
           .help = "Read settings from FILE; options override them",
           .expected = "a settings file",
           .take =
               [](void* arguments, const std::string& text) {
                   if (text.empty()) return false;
                   takeSettingsFile(*static_cast<Arguments*>(arguments), text);
                   return true;
               }},
};

template <typename Arguments>
inline constexpr std::array saveSettingsOptions = {
    Option{.names = "--save-settings",
           .placeholder = "FILE",
           .help = "Write the settings of this run to FILE",
           .expected = "a file",
           .take =
               [](void* arguments, const std::string& text) {
                   if (!text.empty()) static_cast<Arguments*>(arguments)->saveSettings = text;
                   return !text.empty();
               }},
};

// Default sizes of the presets.
inline constexpr std::array presetSizes = {
    Choice<FrameSize>{"dvd", {720, 576}},
    Choice<FrameSize>{"hd", {1280, 720}},
    Choice<FrameSize>{"fullhd", {1920, 1080}},
};

/// Size of the frames.
template <typename Arguments>
inline constexpr std::array sizeOptions = {
    settingOption<Arguments, "size">("--size", "WxH", "Fit the picture into this size [the source's]"),
    Option{.names = "--preset",
           .placeholder = "NAME",
           .help = "The size dvd (720x576), hd (1280x720) or fullhd (1920x1080)",
           .expected = "one of dvd, hd, fullhd",
           .take =
               [](void* arguments, const std::string& text) {
                   for (const auto& preset : presetSizes) {
                       if (text != preset.name) continue;
                       static_cast<Arguments*>(arguments)->size = preset.value;
                       return true;
                   }
                   return false;
               },
           .excludes = "--size"},
};

/// Treatment of the film's picture.
template <typename Arguments>
inline constexpr std::array filmShapeOptions = {
    settingOption<Arguments, "shape.crop">("--crop", "WHAT",
                                           "none, auto (black bars) or WxH+X+Y in the film's pixels [none]"),
    settingOption<Arguments, "shape.fit">("--fit", "HOW", "scale, stretch, pad or fill, see below [scale]"),
    settingOption<Arguments, "shape.padColour">("--pad-colour", "#RRGGBB",
                                                "The colour beside a padded picture [#000000]"),
    settingOption<Arguments, "shape.pixelShape">(
        "--pixel-shape", "SHAPE",
        "Shape of the screen's pixels: square, ql (512x256 fills 4:3) or W:H [square]"),
    settingOption<Arguments, "shape.rotate">("--rotate", "ANGLE",
                                             "Rotate clockwise by 0, 90, 180 or 270 [0]"),
    settingOption<Arguments, "shape.flip">("--flip", "", "Exchange left and right"),
};

template <typename Arguments>
inline constexpr std::array stretchOptions = {
    Option{.names = "--stretch",
           .placeholder = "",
           .help = "Fill the size without keeping the aspect",
           .take =
               [](void* arguments, const std::string&) {
                   return settingRow("shape.fit").take(*static_cast<Arguments*>(arguments), "stretch");
               },
           .excludes = "--fit"},
};

/// The frame rate.
template <typename Arguments>
inline constexpr std::array rateOptions = {
    settingOption<Arguments, "fps">(
        "--fps", "N", "Frames per second, never more than the source has [the source's, up to 60]"),
};

/// The part of the film.
template <typename Arguments>
inline constexpr std::array rangeOptions = {
    settingOption<Arguments, "time.from">("--from", "TIME",
                                          "Start at TIME: seconds, M:SS, H:MM:SS or a percentage [0]"),
    settingOption<Arguments, "time.to">("--to", "TIME", "End before TIME [the film's end]"),
};

/// Colours and look.
template <typename Arguments>
inline constexpr std::array colourOptions = {
    settingOption<Arguments, "mode">("--mode", "32|4",
                                     "16-bit high colour, or black, red, green and white [32]"),
    settingOption<Arguments, "colours.kind">(
        "--colours", "KIND", "Mode 4: levels of brightness or natural colours of the film [levels]"),
    Option{
        .names = "--dither",
        .placeholder = "",
        .help = "Diffuse the error in Mode 4 (no effect in Mode 32)",
        .take = [](void* arguments,
                   const std::string&) { return static_cast<Arguments*>(arguments)->others.dither = true; }},
    settingOption<Arguments, "colours.dithering">(
        "--dithering", "KIND", "none, diffusion, ordered, fine or rows, see below", "--dither"),
    settingOption<Arguments, "colours.tone">("--tone", "N", "Lift of dark natural colours, 1 to 3 [1.6]"),
    settingOption<Arguments, "colours.toe">("--toe", "N",
                                            "Darkness below which all is black, 0 to 0.25 [0.16]"),
    settingOption<Arguments, "colours.sharpen">("--sharpen", "N",
                                                "Sharpness of natural colours in percent, 0 to 200 [100]"),
    settingOption<Arguments, "look.brightness">("--brightness", "N", "-100 to 100 [0]"),
    settingOption<Arguments, "look.contrast">("--contrast", "N", "-100 to 100 [0]"),
    settingOption<Arguments, "look.saturation">("--saturation", "N", "0 (grey) to 200 percent [100]"),
    settingOption<Arguments, "look.gamma">("--gamma", "N", "0.2 (dark) to 5 (bright) [1]"),
    settingOption<Arguments, "look.autoLevels">("--auto-levels", "",
                                                "Stretch the film's range of brightness to the full range"),
};

/// Returns the options of several tables in one.
template <std::size_t... counts>
constexpr auto joined(const std::array<Option, counts>&... tables) {
    std::array<Option, (counts + ...)> all{};
    std::size_t at = 0;
    const auto append = [&](const auto& table) {
        for (const Option& option : table)
            all[at++] = option;
    };
    (append(tables), ...);
    return all;
}

}  // namespace zeb::cli
