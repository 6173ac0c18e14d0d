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
/// does.
/// `name` may begin with folders ("sounds/Logs Accessed").
std::optional<std::string> resourcePath(std::string_view name, std::string_view extension,
                                        const ResourceFolders& folders = standardResourceFolders());

}  // namespace zeb
