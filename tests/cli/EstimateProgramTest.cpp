#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class EstimateProgram : public ::testing::Test {
protected:
    void SetUp() override {
        if (!canMakeClips()) GTEST_SKIP() << "needs the ffmpeg program to make its clips";
        makeSmallClip(m_clip, 2.5);
    }

    ChildProcess::Result estimate(std::vector<std::string> words) {
        words.insert(words.begin(), {"encode", "--estimate"});
        return runZeb(words);
    }

    TemporaryFolder m_folder;
    std::string m_clip = m_folder.file("a.mov");
    std::string m_movie = m_folder.file("a.zeb");
};

TEST_F(EstimateProgram, TellsWhatTheRunWillWrite) {
    for (const char* mode : {"4", "32"}) {
        const auto result = estimate({m_clip, "--mode", mode, "--progress", "json"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.error, "");
        EXPECT_FALSE(fs::exists(m_movie));
        const auto json = nlohmann::json::parse(result.out);
        EXPECT_EQ(json["type"], "forecast");
        EXPECT_EQ(json["fits"], true);
        EXPECT_EQ(json["frames"], 30);
        EXPECT_GT(json["freeSpace"], 0);
        EXPECT_TRUE(json["suggestedSize"].is_null());

        ASSERT_EQ(runZeb({"encode", m_clip, "--mode", mode, "--progress", "none"}).exitCode, 0);
        const auto bytes = static_cast<double>(fs::file_size(m_movie));
        EXPECT_EQ(json["exact"], *mode == '4');
        EXPECT_TRUE(*mode != '4' || json["bytes"] == fs::file_size(m_movie));
        EXPECT_NEAR(json["bytes"].get<double>() / bytes, 1, 0.05);
        fs::remove(m_movie);
    }
}

TEST_F(EstimateProgram, WarnsOfTheFormatsLimit) {
    const std::string second = m_folder.file("second.mkv");
    const std::string film = m_folder.file("long.mkv");
    makeClip(second, {"-f", "lavfi", "-i", "color=black:s=4096x2304:r=10:d=1", "-c:v", "libx264", "-preset",
                      "ultrafast"});
    makeClip(film, {"-stream_loop", "249", "-i", second, "-c", "copy"});
    const auto result = estimate({film, "--mode", "4", "--progress", "json"});
    EXPECT_EQ(result.exitCode, 1);
    const auto json = nlohmann::json::parse(result.out);
    // 4 GiB by 10 records of 32 + 1024 x 2304 bytes, their lengths and two more, after the header.
    EXPECT_EQ(json["formatEndsAt"], (0xFFFFFFFF - 1100) / (10 * (36 + 1024 * 2304) + 8) + 1);
    EXPECT_EQ(json["suggestedFramesPerSecond"], 7);
    const std::string size = std::to_string(json["suggestedSize"]["width"].get<int>()) + "x" +
                             std::to_string(json["suggestedSize"]["height"].get<int>());
    for (const std::vector<std::string>& words : {std::vector<std::string>{film, "--mode", "4", "--fps", "7"},
                                                  {film, "--mode", "4", "--size", size}}) {
        EXPECT_THAT(estimate(words).out, HasSubstr("4 GiB limit    not reached"));
    }

    // A run says so and goes on.
    ChildProcess run(zebCommand({"encode", film, "--mode", "4", "--progress", "plain"}), {});
    EXPECT_THAT(run.readLine().value_or(""), HasSubstr("4096x2304"));
    EXPECT_THAT(run.readLine().value_or(""), StartsWith("Forecast: 5.9 GB"));
    EXPECT_TRUE(run.readLine());
    run.sendSignal(SIGINT);
    const auto ended = run.finish();
    EXPECT_EQ(ended.exitCode, 130);
    EXPECT_THAT(ended.error,
                HasSubstr("long.mkv: the movie would pass the format's 4 GiB after 3:03 of 4:10"));
    EXPECT_THAT(ended.error, HasSubstr("; try --fps 7 or --size " + size + "\n"));
}

}  // namespace
}  // namespace zeb::test
