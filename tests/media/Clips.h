#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "media/Media.h"
#include "tests/platform/TemporaryFolder.h"

/// Films for tests, made by the `ffmpeg` program when they are first asked for, and what they show.
namespace zeb::test {

/// Runs a command line to its end; returns its standard output. Throws unless it exits with 0. Words hold no
/// space and no single quote; "@NAME" stands for a file in the folder of the clips.
std::string run(const std::string& line);

/// A file for this process's tests, removed at its end.
std::string inClipFolder(const std::string& name);
std::string stored(const std::string& name, const std::string& bytes);

/// The path of a clip that `ffmpeg ARGUMENTS... @NAME` makes; made once per process. The extension of the
/// name picks the container.
std::string clip(const std::string& name, const std::string& arguments);

/// A film of numbered pictures, 128 x 64: the number stands in the picture as eight light and dark blocks
/// with their complement below, over noise that gives coders something to do. `numberedFrames` is its input
/// as arguments; `numberedFilm` has 100 at 25 a second, coded as the name says, such as "vp9.webm".
std::string numberedFrames(int count, const std::string& rate = "25");
std::string numberedFilm(const std::string& name);
extern const std::string h264;  // arguments: short groups, pictures predicted from later ones

/// The library under test; its messages go nowhere.
const MediaLibrary& library();
std::shared_ptr<const MediaAsset> open(const std::string& path);
std::unique_ptr<ImageGenerator> images(const std::string& path, int threads = 2);

MediaTime at(double seconds);

/// The number in a picture of such a film, as shown; -1 where the picture shows none clearly, -2 where there
/// is no picture at that time.
int numberIn(const Picture& picture);
int numberAt(ImageGenerator& generator, double time);

using Colour = std::array<int, 4>;  // R, G, B, A; 0 ... 255

struct Drawing {
    int width = 0;
    std::vector<std::uint8_t> bytes{};  // R, G, B, A each

    Colour at(int x, int y) const;
    bool operator==(const Drawing&) const = default;
};

Drawing draw(const Picture& picture, int width, int height,
             DrawingColourSpace colourSpace = DrawingColourSpace::deviceRGB);

/// A drawing's distance in dB, alpha aside, from what another of its size or larger shows at the same place.
double psnr(const Drawing& one, const Drawing& other);

/// The path of a real clip; empty where they are not at hand.
std::string realClip(const std::string& name);

}  // namespace zeb::test
