#include "tests/cli/TestClip.h"

#include <stdexcept>

#include "tests/cli/ChildProcess.h"

namespace zeb::test {
namespace {

ChildProcess::Result runFFmpeg(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {"ffmpeg", "-nostdin", "-v", "error", "-y"});
    return ChildProcess(arguments, {}).finish();
}

}  // namespace

bool canMakeClips() {
    return runFFmpeg({"-version"}).exitCode == 0;
}

void makeClip(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = arguments;
    words.push_back(path);
    const auto result = runFFmpeg(words);
    if (result.exitCode != 0) throw std::runtime_error("ffmpeg: " + result.error);
}

void makeSmallClip(const std::string& path, double seconds) {
    const std::string duration = ":duration=" + std::to_string(seconds);
    makeClip(path, {"-f", "lavfi", "-i", "testsrc2=size=160x120:rate=10" + duration, "-f", "lavfi", "-i",
                    "sine=frequency=440:sample_rate=48000" + duration, "-ac", "2", "-c:v", "mpeg4", "-c:a",
                    "pcm_s16le", "-f", "mov"});
}

void makeLongClip(const std::string& path, int width, int height, int fps, int seconds) {
    // One second is encoded and repeated.
    const std::string second = path + ".second.mkv";
    makeClip(second, {"-f", "lavfi", "-i",
                      "testsrc2=duration=1:size=" + std::to_string(width) + "x" + std::to_string(height) +
                          ":rate=" + std::to_string(fps),
                      "-c:v", "mpeg4", "-q:v", "10"});
    makeClip(path,
             {"-stream_loop", std::to_string(seconds - 1), "-i", second, "-c", "copy", "-f", "matroska"});
}

}  // namespace zeb::test
