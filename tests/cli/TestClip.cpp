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

void makeLongClip(const std::string& path, const std::string& size, int fps, int seconds) {
    const std::string second = path + ".second.mkv";
    const std::string source = "testsrc2=duration=1:size=" + size + ":rate=" + std::to_string(fps);
    makeClip(second, {"-f", "lavfi", "-i", source, "-c:v", "mpeg4", "-q:v", "10"});
    makeClip(path, {"-stream_loop", std::to_string(seconds - 1), "-i", second, "-c", "copy"});
}

}  // namespace zeb::test
