#include "tests/cli/ZebProgram.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <utility>

namespace zeb::test {

std::vector<std::string> zebCommand(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), ZEB_PROGRAM);
    return arguments;
}

ChildProcess::Result runZeb(std::vector<std::string> arguments, const ChildProcess::Options& options) {
    return ChildProcess(zebCommand(std::move(arguments)), options).finish();
}

MovieCheck rightMovie(const std::string& path) {
    const MovieCheck check = checkMovie([&] { return openForReading(path); }, {});
    if (check.fault) throw std::runtime_error(path + ": " + check.fault->text);
    return check;
}

void makeClip(const std::string& path, const std::vector<std::string>& arguments) {
    std::vector<std::string> words = {"ffmpeg", "-nostdin", "-v", "error", "-y"};
    words.insert(words.end(), arguments.begin(), arguments.end());
    words.push_back(path);
    const auto result = ChildProcess(words, {}).finish();
    if (result.exitCode != 0) throw std::runtime_error("ffmpeg: " + result.error);
}

void makeLongClip(const std::string& path, const std::string& size, int fps, int seconds) {
    const std::string second = path + ".second.mkv";
    const std::string source = "testsrc2=duration=1:size=" + size + ":rate=" + std::to_string(fps);
    makeClip(second, {"-f", "lavfi", "-i", source, "-c:v", "mpeg4", "-q:v", "10"});
    makeClip(path, {"-stream_loop", std::to_string(seconds - 1), "-i", second, "-c", "copy"});
}

void awaitFrames(ChildProcess& zeb, int frames) {
    while (const auto line = zeb.readLine()) {
        const auto json = nlohmann::json::parse(*line);
        if (json["type"] == "progress" && json["frames"] > frames) return;
    }
}

void ProgramTest::expectFailure(const std::vector<std::string>& arguments, int exitCode,
                                const std::string& text) {
    const auto before = m_folder.names();
    const auto result = zeb(arguments);
    EXPECT_EQ(result.exitCode, exitCode) << text;
    EXPECT_EQ(result.out, "") << text;
    EXPECT_THAT(result.error, ::testing::StartsWith("zeb: "));
    EXPECT_THAT(result.error, ::testing::HasSubstr(text));
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 1) << result.error;
    EXPECT_THAT(result.error, ::testing::Not(::testing::ContainsRegex("[. ] \\(see")));
    EXPECT_EQ(m_folder.names(), before) << text;
}

void ClipTest::SetUp() {
    if (ChildProcess({"ffmpeg", "-version"}, {}).finish().exitCode != 0)
        GTEST_SKIP() << "needs the ffmpeg program to make its clips";
    makeClip(m_folder.file("a.mov"), {"-f", "lavfi", "-i", "testsrc2=size=160x120:rate=10:duration=2.5", "-f",
                                      "lavfi", "-i", "sine=frequency=440:sample_rate=48000:duration=2.5",
                                      "-ac", "2", "-c:v", "mpeg4", "-c:a", "pcm_s16le"});
}

}  // namespace zeb::test
