#pragma once

#include <string>
#include <string_view>

/// Names in paths, byte by byte. An extension is what follows the last dot of a path's last piece (slashes at
/// the end ignored). A dot in front hides a file, one at the end separates nothing, and what holds a blank is
/// part of the name: none of these starts an extension. What is returned lies in `path`.
namespace zeb {

/// The last piece of `path`; "/" for the root.
std::string_view lastPiece(std::string_view path);

/// Returns the folder that holds the last piece of `path`; "." where `path` names none.
std::string folderOf(const std::string& path);

/// Returns `path` up to its last piece, slash included; empty where `path` names no folder.
std::string_view withoutLastPiece(std::string_view path);

/// Without its dot; empty where there is none.
std::string_view pathExtension(std::string_view path);

/// The last piece of `path` without its extension and that dot.
std::string_view nameWithoutExtension(std::string_view path);

}  // namespace zeb
