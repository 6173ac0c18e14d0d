#pragma once

#include <string>
#include <vector>

namespace zeb::test {

/// Whether the `ffmpeg` program is there to make clips with.
bool canMakeClips();

/// Makes a file with the `ffmpeg` program and the arguments that stand before the output. Throws when it
/// fails.
void makeClip(const std::string& path, const std::vector<std::string>& arguments);

/// Moving pictures that keep a machine busy: `size` at `fps`, `seconds` long, without sound. Beside it stays
/// the second that it repeats.
void makeLongClip(const std::string& path, const std::string& size, int fps, int seconds);

}  // namespace zeb::test
