#include "Clips.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

#include "media/Media.h"

namespace zeb::test {

const std::string h264 = "-c:v libx264 -g 20 -bf 3 -x264-params b-pyramid=normal:scenecut=0 ";

std::string run(const std::string& line) {
    std::string command;
    std::istringstream words(line);
    for (std::string word; words >> word;)
        command += "'" + (word[0] == '@' ? inClipFolder(word.substr(1)) : word) + "' ";
    std::FILE* output = ::popen((command + "</dev/null").c_str(), "r");
    if (output == nullptr) throw std::runtime_error("failed: " + line);
    std::string bytes;
    std::array<char, 65536> piece{};
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), output))
        bytes.append(piece.data(), count);
    if (::pclose(output) != 0) throw std::runtime_error("failed: " + line);
    return bytes;
}

std::string inClipFolder(const std::string& name) {
    static const TemporaryFolder folder;
    return folder.file(name);
}

std::string stored(const std::string& name, const std::string& bytes) {
    store(inClipFolder(name), bytes);
    return inClipFolder(name);
}

std::string clip(const std::string& name, const std::string& arguments) {
    static std::set<std::string> made;
    if (made.insert(name).second) run("ffmpeg -nostdin -y -v error " + arguments + " @" + name);
    return inClipFolder(name);
}

std::string numberedFrames(int count, const std::string& rate) {
    return "-f lavfi -i nullsrc=s=128x64:r=" + rate +
           ",format=yuv420p,geq=cb=128:cr=128:lum=if(eq(mod(floor(N/pow(2\\,floor(X/"
           "16)))\\,2)\\,lt(Y\\,32))\\,190\\,40)"
           "+mod(floor(abs(sin(X*12.9+Y*78.2+N*37.7))*43758)\\,16),trim=end_frame=" +
           std::to_string(count) + " ";
}

std::string numberedFilm(const std::string& name) {
    const std::map<std::string, std::string> codings = {
        {"h264", h264},
        {"open", "-c:v libx264 -g 20 -bf 3 -x264-params open-gop=1:scenecut=0"},
        {"fragments", h264 + "-movflags frag_keyframe+empty_moov"},
        {"h265",
         "-c:v libx265 -crf 6 -preset ultrafast -x265-params log-level=none:keyint=20:bframes=3:b-adapt=0"},
        {"mpeg2", "-c:v mpeg2video -g 12 -bf 2 -b:v 2M"},
        {"mpeg4", "-c:v mpeg4 -g 20 -bf 2 -b:v 2M"},
        {"vp8", "-c:v libvpx -g 20 -auto-alt-ref 1 -lag-in-frames 10 -b:v 1M -cpu-used 8"},
        {"vp9", "-c:v libvpx-vp9 -cpu-used 8 -deadline realtime -g 20 -b:v 1M"},
        {"wmv2", "-c:v wmv2 -g 20 -b:v 2M"},
        {"ffv1", "-c:v ffv1"},
        {"mjpeg", "-c:v mjpeg -q:v 2"}};
    return clip(name, numberedFrames(100) + codings.at(name.substr(0, name.find('.'))));
}

const MediaLibrary& library() {
    static const auto library = makeFFmpegMediaLibrary(MediaLogging::silent);
    return *library;
}

std::shared_ptr<const MediaAsset> open(const std::string& path) {
    return library().open(path, {});
}

std::unique_ptr<ImageGenerator> images(const std::string& path, int threads) {
    return open(path)->makeImageGenerator(threads, {});
}

MediaTime at(double seconds) {
    return MediaTime::withSeconds(seconds, 90000);
}

int numberIn(const Picture& picture) {
    const Drawing drawing = draw(picture, 128, 64);
    int number = 0;
    for (int digit = 0; digit < 8; ++digit) {
        const int difference = drawing.at(digit * 16 + 8, 16)[1] - drawing.at(digit * 16 + 8, 48)[1];
        if (std::abs(difference) < 80) return -1;
        number |= (difference > 0 ? 1 : 0) << digit;
    }
    return number;
}

int numberAt(ImageGenerator& generator, double time) {
    try {
        return numberIn(*generator.copyImage(at(time)));
    } catch (const MediaError&) {
        return -2;
    }
}

Colour Drawing::at(int x, int y) const {
    const auto first = bytes.begin() + (static_cast<std::ptrdiff_t>(y) * width + x) * 4;
    return {first[0], first[1], first[2], first[3]};
}

Drawing draw(const Picture& picture, int width, int height, DrawingColourSpace colourSpace) {
    Drawing drawing{width, std::vector<std::uint8_t>(static_cast<std::size_t>(width * height) * 4)};
    picture.draw({drawing.bytes, width, height, colourSpace});
    return drawing;
}

double psnr(const Drawing& one, const Drawing& other) {
    const int count = static_cast<int>(one.bytes.size()) / 4;
    double error = 0;
    for (int i = 0; i < count * 3; ++i) {
        const int x = i / 3 % one.width, y = i / 3 / one.width;
        const auto component = static_cast<std::size_t>(i % 3);
        error += std::pow(one.at(x, y)[component] - other.at(x, y)[component], 2);
    }
    return 10 * std::log10(255.0 * 255 * 3 * count / error);
}

std::string realClip(const std::string& name) {
    const char* folder = std::getenv("ZEB_TEST_MEDIA");
    const auto path = std::filesystem::path(folder != nullptr ? folder : ZEB_MEDIA_FOLDER) / name;
    return std::filesystem::exists(path) ? path.string() : "";
}

}  // namespace zeb::test
