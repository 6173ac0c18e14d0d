#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "conversion/look/FrameGeometry.h"
#include "conversion/plan/Settings.h"
#include "conversion/plan/SourceAnalysis.h"

namespace zeb {

/// Settings from options and settings files. The source determines the empty ones.
struct RequestedSettings {
    std::optional<std::string> title;
    std::optional<FrameSize> size;
    std::optional<int> fps;
    Settings others;      ///< all settings but title, size and frame rate
    std::string foreign;  ///< the unknown keys of a settings file: a JSON object, or empty
};

/// Returns the settings for one source: the requested ones, and otherwise the proposals of the window.
Settings settingsFor(const RequestedSettings& requested, const std::string& input, const SourceInfo& source);

/// One setting: its place in settings files, and its value as text, as in options.
struct SettingRow {
    enum class Form { text, number, truth };

    const char* path;        ///< key in a settings file: "colours.tone" is "tone" in the object "colours"
    const char* expected;    ///< "a number from 1 to 3", for errors
    Form form = Form::text;  ///< type of the value in a settings file
    /// Sets the value; returns false if the text is invalid.
    bool (*take)(RequestedSettings& requested, std::string_view text);
    /// Returns the value as text; nothing if the source determines it.
    std::optional<std::string> (*text)(const RequestedSettings& requested);
};

/// Returns all settings.
std::span<const SettingRow> settingRows();

/// Returns the row of this path, which must exist.
const SettingRow& settingRow(std::string_view path);

}  // namespace zeb
