#include "platform/files/ApplicationGroupContainer.h"

#include <cstdlib>
#include <filesystem>

namespace zeb {

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
