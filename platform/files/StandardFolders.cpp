#include "platform/files/StandardFolders.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace zeb {
namespace {

constexpr std::string_view folderName = "zebmaker";

ResourceFolders foldersOfThisProcess() {
    ResourceFolders folders;
#ifdef ZEB_DEVELOPMENT_RESOURCES
    folders.emplace_back(ZEB_DEVELOPMENT_RESOURCES);
#endif
    std::error_code error;
    const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
    if (!error) folders.push_back((program.parent_path().parent_path() / "share" / folderName).string());

    const char* const variable = std::getenv("XDG_DATA_DIRS");
    std::string_view rest = variable && *variable ? variable : "/usr/local/share:/usr/share";
    while (!rest.empty()) {
        const std::filesystem::path folder = rest.substr(0, rest.find(':'));
        if (folder.is_absolute()) folders.push_back((folder / folderName).string());  // else invalid
        rest.remove_prefix(std::min(rest.size(), folder.native().size() + 1));
    }
    return folders;
}

}  // namespace

const ResourceFolders& standardResourceFolders() {
    static const ResourceFolders folders = foldersOfThisProcess();
    return folders;
}

std::optional<std::string> resourcePath(std::string_view name, std::string_view extension,
                                        const ResourceFolders& folders) {
    const std::string file = std::string(name) + "." + std::string(extension);
    for (const std::string& folder : folders) {
        const auto path = std::filesystem::path(folder) / file;
        std::error_code error;
        if (std::filesystem::is_regular_file(path, error)) return path.string();
    }
    return std::nullopt;
}

std::optional<std::string> applicationGroupContainer() {
    const auto absolute = [](const char* name) -> std::filesystem::path {
        const char* value = std::getenv(name);
        const std::filesystem::path path = value == nullptr ? "" : value;
        return path.is_absolute() ? path : std::filesystem::path();
    };
    const auto home = absolute("HOME");
#ifdef __APPLE__
    const auto data = home.empty() ? home : home / "Library/Application Support";
#else
    auto data = absolute("XDG_DATA_HOME");
    if (data.empty() && !home.empty()) data = home / ".local/share";
#endif
    if (data.empty()) return std::nullopt;
    return (data / "zebmaker").string();
}

}  // namespace zeb
