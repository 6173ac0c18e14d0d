#include "cli/Command.h"

#include <algorithm>

namespace zeb::cli {

std::vector<std::string> splitList(std::string_view list, std::string_view separator) {
    std::vector<std::string> parts;
    while (!list.empty()) {
        const std::size_t end = std::min(list.find(separator), list.size());
        parts.emplace_back(list.substr(0, end));
        list.remove_prefix(std::min(end + separator.size(), list.size()));
    }
    return parts;
}

}  // namespace zeb::cli
