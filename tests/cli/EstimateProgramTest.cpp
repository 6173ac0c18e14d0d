#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class EstimateProgram : public ClipTest {
protected:
    ChildProcess::Result estimate(std::vector<std::string> words) {
        words.insert(words.begin(), {"encode", "--estimate"});
        return zeb(words);
    }
};

TEST_F(EstimateProgram, TellsWhatTheRunWillWrite) {
    for (const std::string mode : {"4", "32"}) {
        const auto result = estimate({"a.mov", "--mode", mode, "--progress", "json"});
        EXPECT_EQ(result.exitCode, 0);
        EXPECT_EQ(result.error, "");
        const auto json = nlohmann::json::parse(result.out);
        EXPECT_EQ(json["type"], "forecast");
        EXPECT_EQ(json["fits"], true);
        EXPECT_EQ(json["frames"], 30);
        EXPECT_GT(json["freeSpace"], 0);
        EXPECT_EQ(json["exact"], mode == "4");
        ASSERT_EQ(zeb({"encode", "a.mov", "--mode", mode, "--progress", "none"}).exitCode, 0);
        const auto bytes = static_cast<double>(std::filesystem::file_size(m_folder.file("a.zeb")));
        EXPECT_NEAR(json["bytes"].get<double>() / bytes, 1, mode == "4" ? 0 : 0.05);
        std::filesystem::remove(m_folder.file("a.zeb"));
    }
}

TEST_F(EstimateProgram, SpeaksToPeopleAndGoesOnAfterAFailure) {
    const auto result = estimate({"missing.mp4", "a.mov", "--audio", "off"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.error, StartsWith("zeb: missing.mp4: "));
    EXPECT_THAT(result.out, StartsWith("a.mov -> a.zeb: 160x120, 10 frames per second, 0:03, Mode 32\n"));
    EXPECT_THAT(result.out, HasSubstr("\n  File size      about "));
    EXPECT_THAT(result.out, HasSubstr("\n  4 GiB limit    not reached\n  Free space     "));
}

TEST_F(EstimateProgram, WarnsOfTheFormatsLimit) {
    makeClip(m_folder.file("second.mkv"), {"-f", "lavfi", "-i", "color=black:s=4096x2304:r=10:d=1", "-c:v",
                                           "libx264", "-preset", "ultrafast"});
    makeClip(m_folder.file("long.mkv"),
             {"-stream_loop", "249", "-i", m_folder.file("second.mkv"), "-c", "copy"});
    const auto result = estimate({"long.mkv", "--mode", "4", "--progress", "json"});
    EXPECT_EQ(result.exitCode, 1);
    const auto json = nlohmann::json::parse(result.out);
    // 4 GiB by 10 records of 32 + 1024 x 2304 bytes, their lengths and two more, after the header.
    EXPECT_EQ(json["formatEndsAt"], (0xFFFFFFFF - 1100) / (10 * (36 + 1024 * 2304) + 8) + 1);
    EXPECT_EQ(json["suggestedFramesPerSecond"], 7);

    // A run says so and goes on.
    ChildProcess run(zebCommand({"encode", "long.mkv", "--mode", "4", "--progress", "plain"}), m_options);
    EXPECT_THAT(run.readLine().value_or(""), HasSubstr("4096x2304"));
    EXPECT_THAT(run.readLine().value_or(""), StartsWith("Forecast: 5.9 GB"));
    EXPECT_TRUE(run.readLine());
    run.sendSignal(SIGINT);
    const auto ended = run.finish();
    EXPECT_EQ(ended.exitCode, 130);
    EXPECT_THAT(ended.error,
                HasSubstr("long.mkv: the movie would pass the format's 4 GiB after 3:03 of 4:10"));
    EXPECT_THAT(ended.error, HasSubstr("; try --fps 7 or --size "));
}

}  // namespace
}  // namespace zeb::test
