#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zeb {

/// Folders that may hold the files of the application, in order of preference.
using ResourceFolders = std::vector<std::string>;

/// Returns the folders of this process: the source tree's in a development build (ZEB_DEVELOPMENT_RESOURCES);
/// "../share/zebmaker" beside the program's folder; "zebmaker" in each folder of XDG_DATA_DIRS (by default
/// /usr/local/share and /usr/share).
const ResourceFolders& standardResourceFolders();

/// Returns the path of the resource file "NAME.EXTENSION" in the first folder that has it; nothing if none
/// does. `name` may begin with folders ("sounds/Logs Accessed").
std::optional<std::string> resourcePath(std::string_view name, std::string_view extension,
                                        const ResourceFolders& folders = standardResourceFolders());

/// Returns the folder that the application shares with companion tools: "zebmaker" in the user's data
/// directory ($XDG_DATA_HOME or ~/.local/share, XDG base directories; on macOS ~/Library/Application
/// Support). It may be missing. Returns nothing if the environment contains no absolute path.
std::optional<std::string> applicationGroupContainer();

}  // namespace zeb
