#include "Clips.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <set>
#include <sstream>
#include <stdexcept>

#include "platform/ffmpeg/FFmpegMediaLibrary.h"

namespace zeb::test {

std::string run(const std::vector<std::string>& words) {
    std::string line;
    for (const std::string& word : words)
        line += "'" + word + "' ";
    std::FILE* output = ::popen((line + "</dev/null").c_str(), "r");
    if (output == nullptr) throw std::runtime_error("failed: " + line);
    std::string bytes;
    std::array<char, 65536> piece{};
    while (const std::size_t count = std::fread(piece.data(), 1, piece.size(), output))
        bytes.append(piece.data(), count);
    if (::pclose(output) != 0) throw std::runtime_error("failed: " + line);
    return bytes;
}

std::vector<std::string> words(const std::string& line) {
    std::istringstream stream(line);
    return {std::istream_iterator<std::string>(stream), {}};
}

const std::string& clipFolder() {
    static const TemporaryFolder folder;
    static const std::string path = folder.path();
    return path;
}

std::string clip(const std::string& name, const std::string& arguments) {
    static std::set<std::string> made;
    std::string path = clipFolder() + "/" + name;
    if (!made.insert(name).second) return path;
    std::vector<std::string> line = words("ffmpeg -nostdin -y -v error " + arguments);
    for (std::string& word : line) {
        if (word.starts_with("@")) word = clipFolder() + "/" + word.substr(1);
    }
    line.push_back(path);
    run(line);
    return path;
}

std::optional<std::string> realClip(const std::string& name) {
    const char* folder = std::getenv("ZEB_TEST_MEDIA");
    const auto path = std::filesystem::path(folder != nullptr ? folder : ZEB_MEDIA_FOLDER) / name;
    if (!std::filesystem::exists(path)) return std::nullopt;
    return path.string();
}

const MediaLibrary& library() {
    static const auto library = makeFFmpegMediaLibrary(MediaLogging::silent);
    return *library;
}

std::shared_ptr<const MediaAsset> open(const std::string& path) {
    return library().open(path, {});
}

namespace {

constexpr int numberWidth = 128, numberHeight = 64, digits = 8, digitWidth = numberWidth / digits;

}  // namespace

std::string numberedFrames(int count, const std::string& rate) {
    const std::string name = "numbers-" + std::to_string(count) + ".yuv";
    const std::string path = clipFolder() + "/" + name;
    if (!std::filesystem::exists(path)) {
        std::string film;
        std::uint32_t noise = 1;
        for (int frame = 0; frame < count; ++frame) {
            for (int y = 0; y < numberHeight; ++y) {
                for (int x = 0; x < numberWidth; ++x) {
                    noise = noise * 1664525 + 1013904223;
                    const bool isLight = ((frame >> x / digitWidth & 1) != 0) == (y < numberHeight / 2);
                    film += static_cast<char>((isLight ? 190 : 40) + static_cast<int>(noise >> 28));
                }
            }
            film.append(numberWidth * numberHeight / 2, static_cast<char>(128));
        }
        store(path, film);
    }
    return "-f rawvideo -pix_fmt yuv420p -s 128x64 -framerate " + rate + " -i @" + name + " ";
}

std::optional<int> numberIn(const Picture& picture) {
    const std::vector<std::uint8_t> pixels = draw(picture, numberWidth, numberHeight);
    int number = 0;
    for (int digit = 0; digit < digits; ++digit) {
        int levels[2] = {};
        for (int half = 0; half < 2; ++half) {
            const int y = numberHeight / 4 + half * numberHeight / 2, x = digit * digitWidth + digitWidth / 2;
            levels[half] = pixels[static_cast<std::size_t>((y * numberWidth + x) * 4 + 1)];
        }
        if (std::abs(levels[0] - levels[1]) < 80) return std::nullopt;
        number |= (levels[0] > levels[1] ? 1 : 0) << digit;
    }
    return number;
}

std::vector<std::uint8_t> draw(const Picture& picture, int width, int height,
                               DrawingColourSpace colourSpace) {
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    picture.draw({pixels, width, height, colourSpace});
    return pixels;
}

MediaTime at(double seconds) {
    return MediaTime::withSeconds(seconds, 90000);
}

}  // namespace zeb::test
