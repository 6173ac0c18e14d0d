#pragma once

#include <string>

#include "format/check/MovieFacts.h"

namespace zeb::cli {

/// The facts of the movie in `file` as aligned lines, made harmless for a terminal.
std::string infoText(const std::string& file, const MovieFacts& facts);

/// The same as one line of JSON: file, title, width, height, framesPerSecond, mode, frames, seconds,
/// soundChannels, soundRate (Hz, 0 without sound), loop, fileSize, bytesPerSecond, largestBlock (both in
/// bytes), finished.
std::string infoJson(const std::string& file, const MovieFacts& facts);

}  // namespace zeb::cli
