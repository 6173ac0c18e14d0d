#pragma once

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

}  // namespace zeb
