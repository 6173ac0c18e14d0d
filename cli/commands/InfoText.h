#pragma once

#include <string>

#include "format/check/MovieFacts.h"

namespace zeb::cli {

/// Returns the facts about the movie in `file` as aligned lines, escaped for a terminal.
std::string infoText(const std::string& file, const MovieFacts& facts);

/// Returns the facts as one line of JSON: file, title, width, height, framesPerSecond, mode, frames, seconds,
/// soundChannels, soundRate (Hz, 0 without sound), loop, fileSize, bytesPerSecond, largestBlock (both in
/// bytes), finished.
std::string infoJson(const std::string& file, const MovieFacts& facts);

}  // namespace zeb::cli
