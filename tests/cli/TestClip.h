#pragma once

#include <string>
#include <vector>

namespace zeb::test {

/// Whether the `ffmpeg` program is there to make clips with.
bool canMakeClips();

/// Makes a file with the `ffmpeg` program and the arguments that stand before the output. Throws when it
/// fails.
void makeClip(const std::string& path, const std::vector<std::string>& arguments);

/// A moving test picture of 160 x 120 at 10 frames per second with a stereo tone, `seconds` long.
void makeSmallClip(const std::string& path, double seconds);

/// Moving pictures that keep a machine busy: `width` x `height` at `fps`, `seconds` long, without sound.
void makeLongClip(const std::string& path, int width, int height, int fps, int seconds);

}  // namespace zeb::test
