#pragma once

#include <string>
#include <string_view>

/// Names in paths, byte by byte. The extension is the text after the last dot of the last piece of a path
/// (slashes at the end are ignored). A dot at the start or the end of the piece, or before a text with a
/// blank, starts no extension. The results are views into `path`.
namespace zeb {

/// Returns the last piece of `path`; "/" for the root.
std::string_view lastPiece(std::string_view path);

/// Returns the folder that contains the last piece of `path`; "." if `path` contains none.
std::string folderOf(const std::string& path);

/// Returns `path` up to its last piece, slash included; empty if `path` contains no folder.
std::string_view withoutLastPiece(std::string_view path);

/// Returns the extension without its dot; empty for a name without one.
std::string_view pathExtension(std::string_view path);

/// Returns the last piece of `path` without extension and dot.
std::string_view nameWithoutExtension(std::string_view path);

}  // namespace zeb
