#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "media/Media.h"
#include "tests/platform/TemporaryFolder.h"

/// Videos for tests, made by the `ffmpeg` program on first use, and functions that read what they show.
namespace zeb::test {

/// Runs a command line and returns its standard output. Throws unless it exits with 0. Words must not contain
/// spaces or single quotes. "@NAME" means a file in the clip folder.
std::string run(const std::string& line);

/// The path of a file in the clip folder, which is removed at the end of the process. `stored` also writes
/// the file.
std::string inClipFolder(const std::string& name);
std::string stored(const std::string& name, const std::string& bytes);

/// The path of a clip that `ffmpeg ARGUMENTS... @NAME` makes once per process. The extension selects the
/// container.
std::string clip(const std::string& name, const std::string& arguments);

/// A video of numbered pictures, 128 x 64. Eight light or dark blocks show the number, with their complement
/// below, over noise. `numberedFrames` returns the input arguments. `numberedFilm` has 100 pictures at 25 per
/// second in the coding that its name states, such as "vp9.webm".
std::string numberedFrames(int count, const std::string& rate = "25");
std::string numberedFilm(const std::string& name);
extern const std::string h264;  // arguments: short groups, pictures predicted from later ones

/// The library under test, without log output.
const MediaLibrary& library();
std::shared_ptr<const MediaAsset> open(const std::string& path);
std::unique_ptr<ImageGenerator> images(const std::string& path, int threads = 2);

MediaTime at(double seconds);

/// The number that a picture shows: -1 if it is not clearly readable, -2 if there is no picture at that time.
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

/// PSNR in dB, without alpha, between a drawing and the same area of another one that is at least as large.
double psnr(const Drawing& one, const Drawing& other);

/// The path of a real clip. Empty if the clips are not available.
std::string realClip(const std::string& name);

}  // namespace zeb::test
