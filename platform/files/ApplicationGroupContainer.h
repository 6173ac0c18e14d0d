#pragma once

#include <optional>
#include <string>

namespace zeb {

/// Returns the folder that the application shares with companion tools: "zebmaker" in the user's data
/// directory
/// ($XDG_DATA_HOME or ~/.local/share, XDG base directories; on macOS ~/Library/Application Support). It need
/// not exist. Returns nothing if the environment names no absolute path.
std::optional<std::string> applicationGroupContainer();

}  // namespace zeb
