#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/Media.h"
#include "tests/platform/TemporaryFolder.h"

/// Films for tests, made by the `ffmpeg` program when they are first asked for.
namespace zeb::test {

/// Runs a program, looked up in PATH, to its end; returns its standard output. Throws unless it exits with 0.
std::string run(const std::vector<std::string>& words);

/// Words of a command line; none holds a space or a quote.
std::vector<std::string> words(const std::string& line);

/// A folder for this process's clips, removed at its end.
const std::string& clipFolder();

/// The path of a clip that `ffmpeg -v error ARGUMENTS... NAME` makes; made once per process. The extension of
/// the name picks the container. In the arguments "@NAME" stands for the path of a clip made before.
std::string clip(const std::string& name, const std::string& arguments);

/// Path of a real clip; nothing where they are not at hand.
std::optional<std::string> realClip(const std::string& name);

/// The library under test; its messages go nowhere.
const MediaLibrary& library();
std::shared_ptr<const MediaAsset> open(const std::string& path);

/// A film of numbered pictures, 128 x 64: the number stands in the picture as eight light and dark blocks
/// with their complement below, over noise that gives coders something to do. `numberedFrames` is its input
/// as arguments.
std::string numberedFrames(int count, const std::string& rate = "25");

/// The number in a picture of such a film, as shown; nothing where the picture shows none clearly.
std::optional<int> numberIn(const Picture& picture);

/// The pixels of a picture, R, G, B, A each.
std::vector<std::uint8_t> draw(const Picture& picture, int width, int height,
                               DrawingColourSpace colourSpace = DrawingColourSpace::deviceRGB);

MediaTime at(double seconds);

}  // namespace zeb::test

/// Skips a test that needs a real clip where it is not at hand; else `variable` is its path.
#define ZEB_REAL_CLIP(variable, name)                                                          \
    const auto variable##Found = zeb::test::realClip(name);                                    \
    if (!variable##Found)                                                                      \
        GTEST_SKIP() << "no real clips: set ZEB_TEST_MEDIA to the folder that holds " << name; \
    const std::string& variable = *variable##Found
