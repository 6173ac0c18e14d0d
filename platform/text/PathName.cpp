#include "platform/text/PathName.h"

namespace zeb {

std::string_view lastPiece(std::string_view path) {
    while (path.size() > 1 && path.back() == '/')
        path.remove_suffix(1);
    return path.size() > 1 ? path.substr(path.rfind('/') + 1) : path;
}

std::string_view withoutLastPiece(std::string_view path) {
    const std::size_t end = path.find_last_not_of('/');
    const std::size_t slash = path.rfind('/', end);
    return slash == std::string_view::npos ? std::string_view() : path.substr(0, slash + 1);
}

std::string folderOf(const std::string& path) {
    std::string_view folder = withoutLastPiece(path);
    if (folder.empty()) return ".";
    while (folder.size() > 1 && folder.back() == '/')
        folder.remove_suffix(1);
    return std::string(folder);
}

std::string_view pathExtension(std::string_view path) {
    const std::string_view name = lastPiece(path);
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos || dot == 0) return {};
    const std::string_view extension = name.substr(dot + 1);
    return extension.find(' ') == std::string_view::npos ? extension : std::string_view();
}

std::string_view nameWithoutExtension(std::string_view path) {
    const std::string_view extension = pathExtension(path);
    std::string_view name = lastPiece(path);
    if (!extension.empty()) name.remove_suffix(extension.size() + 1);
    return name;
}

}  // namespace zeb
