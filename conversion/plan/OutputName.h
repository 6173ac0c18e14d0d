#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace zeb {

/// `text` such that it can be a file's name on every system: trimmed, with "_" for each of \ / : ? % * | " <
/// >. Empty when nothing is left.
std::string safeFileName(std::string_view text);

/// The file name that a save panel proposes for a movie with this title, made from this input.
std::string proposedOutputName(std::string_view title, const std::string& inputPath);

/// The place of a movie next to its source: the source's path with the extension "zeb".
std::string outputBeside(const std::string& inputPath);

/// The same, with a number from 2 on behind the name where `isTaken` says that a place is in use:
/// "film 2.zeb".
std::string freeOutputBeside(const std::string& inputPath,
                             const std::function<bool(const std::string& path)>& isTaken);

}  // namespace zeb
