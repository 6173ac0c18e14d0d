#pragma once

#include <optional>
#include <string>

namespace zeb {

/// The folder that the application shares with companion tools: "zebmaker" in the user's data directory
/// ($XDG_DATA_HOME or ~/.local/share, XDG base directories; on macOS ~/Library/Application Support). It need
/// not exist. Nothing when the environment names no absolute path.
std::optional<std::string> applicationGroupContainer();

}  // namespace zeb
