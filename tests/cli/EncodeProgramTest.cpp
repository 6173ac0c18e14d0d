#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/StrictMovie.h"
#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class EncodeProgram : public ::testing::Test {
protected:
    void SetUp() override {
        if (!canMakeClips()) GTEST_SKIP() << "needs the ffmpeg program to make its clips";
        makeSmallClip(m_clip, 2.5);
    }

    TemporaryFolder m_folder;
    std::string m_clip = m_folder.file("Tall ship.mov");
    std::string m_movie = m_folder.file("Tall ship.zeb");
};

TEST_F(EncodeProgram, ProposesEverything) {
    const auto result = runZeb({"encode", m_clip});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.out,
                StartsWith(m_clip + " -> " + m_movie + ": 160x120, 10 frames per second, 0:03, Mode 32\n"));
    EXPECT_THAT(result.out, HasSubstr("\n" + m_movie + ": 160x120, 30 frames, 0:03, "));

    const StrictMovie movie = readStrictly(m_movie);
    EXPECT_EQ(movie.mode, 32);
    EXPECT_EQ(movie.frames, 30);
    EXPECT_EQ(movie.soundChannels, 2);
    EXPECT_FALSE(movie.loop);
    EXPECT_NE(movie.records[0], movie.records[1]);
    // The tone sounds for 2.5 of the 3 seconds.
    const auto silence = movie.sound.begin() + 2 * 2 * 20000 + 20000;
    EXPECT_GT(std::count_if(movie.sound.begin(), silence, [](int byte) { return byte != 128; }), 80000);
    EXPECT_LT(std::count_if(silence, movie.sound.end(), [](int byte) { return byte != 128; }), 10);
}

TEST_F(EncodeProgram, DoesWhatTheOptionsSay) {
    const auto result = runZeb({"encode", "--size", "80x80", "--stretch", "--fps", "4", "--mode", "4",
                                "--dither", "--audio", "mono", "--loop", "--title", "QL", "--threads", "2",
                                "-o", m_folder.file("other.zeb"), m_clip});
    EXPECT_EQ(result.exitCode, 0);
    const StrictMovie movie = readStrictly(m_folder.file("other.zeb"));
    EXPECT_EQ(movie.width, 80);
    EXPECT_EQ(movie.height, 80);
    EXPECT_EQ(movie.fps, 4);
    EXPECT_EQ(movie.mode, 4);
    EXPECT_EQ(movie.soundChannels, 1);
    EXPECT_TRUE(movie.loop);
    EXPECT_FALSE(fs::exists(m_movie));
}

TEST_F(EncodeProgram, TellsProgressInJson) {
    const auto result = runZeb({"encode", m_clip, "--progress", "json", "--track", "7"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error,
              "zeb: " + m_clip + ": there is no sound track 7; track 1, the last one, is taken\n");
    std::istringstream stream(result.out);
    std::int64_t frames = 0;
    nlohmann::json json;
    for (std::string line; std::getline(stream, line);) {
        json = nlohmann::json::parse(line);
        if (json["type"] != "progress") continue;
        EXPECT_GE(json["frames"], frames);
        frames = json["frames"];
    }
    EXPECT_EQ(frames, 30);
    EXPECT_EQ(json["type"], "done");
    EXPECT_EQ(json["bytes"], fs::file_size(m_movie));
}

TEST_F(EncodeProgram, ReplacesOnlyWhenForced) {
    std::ofstream(m_movie) << "precious";
    const auto refused = runZeb({"encode", m_clip});
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_EQ(refused.error, "zeb: " + m_movie + ": exists already (use --force to replace it)\n");
    EXPECT_EQ(contents(m_movie), "precious");

    EXPECT_EQ(runZeb({"encode", m_clip, "--force", "--progress", "none"}).exitCode, 0);
    EXPECT_EQ(readStrictly(m_movie).frames, 30);
}

TEST_F(EncodeProgram, NeverHarmsItsInput) {
    const std::string before = contents(m_clip);
    fs::create_symlink(m_clip, m_folder.file("soft.zeb"));
    for (const std::string& output : {m_clip, m_folder.file("soft.zeb")}) {
        const auto result = runZeb({"encode", m_clip, "-o", output, "--force"});
        EXPECT_EQ(result.exitCode, 4);
        EXPECT_EQ(result.error, "zeb: " + m_clip + ": Kann Ausgabedatei nicht erstellen: " + output + "\n");
        EXPECT_EQ(contents(m_clip), before);
        EXPECT_TRUE(fs::exists(output));
    }
}

TEST_F(EncodeProgram, TakesOddNamesAsTheyAre) {
    ChildProcess::Options options;
    options.folder = m_folder.path();
    const std::vector<std::string> names = {"[a,b]", "a:b.mov", "img%03d.mov", "http:x.mov", "info", "*.mov"};
    std::vector<std::string> words = {"encode", "--progress", "none", "--fps", "1"};
    for (const std::string& name : names) {
        fs::copy(m_clip, m_folder.file(name));
        words.push_back(name);
    }
    const auto result = runZeb(words, options);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    for (const std::string& name : names) {
        EXPECT_EQ(readStrictly(fs::path(m_folder.file(name)).replace_extension(".zeb")).frames, 3) << name;
    }
}

TEST_F(EncodeProgram, GoesOnAfterAFailure) {
    fs::copy(m_clip, m_folder.file("-second.mov"));
    ChildProcess::Options options;
    options.folder = m_folder.path();
    const auto result = runZeb(
        {"encode", "--progress", "none", "--", "missing.mp4", "Tall ship.mov", "-second.mov"}, options);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.error, StartsWith("zeb: missing.mp4: "));
    EXPECT_EQ(readStrictly(m_movie).frames, 30);
    EXPECT_EQ(readStrictly(m_folder.file("-second.zeb")).frames, 30);
}

TEST_F(EncodeProgram, FinishesWhenNobodyReadsItsProgress) {
    ChildProcess::Options options;
    options.ignoresOutput = true;
    const auto result = runZeb({"encode", m_clip, "--progress", "json"}, options);
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(readStrictly(m_movie).frames, 30);
}

TEST_F(EncodeProgram, KeepsWholeSecondsOnAFullDisk) {
    ASSERT_EQ(runZeb({"encode", m_clip}).exitCode, 0);
    ChildProcess::Options options;
    options.fileSizeLimit = fs::file_size(m_movie) * 9 / 10;
    const auto result = runZeb({"encode", m_clip, "--force"}, options);
    EXPECT_EQ(result.exitCode, 4);
    EXPECT_EQ(result.error, "zeb: " + m_movie + ": File too large; " + m_movie +
                                " was finished after 2 seconds and plays as a shorter movie\n");
    EXPECT_EQ(readStrictly(m_movie).seconds, 2);

    options.fileSizeLimit = 1000;
    const auto nothing = runZeb({"encode", m_clip, "--force"}, options);
    EXPECT_EQ(nothing.exitCode, 4);
    EXPECT_EQ(nothing.error, "zeb: " + m_movie + ": File too large; " + m_movie +
                                 " had no whole second yet and was removed\n");
    EXPECT_FALSE(fs::exists(m_movie));
}

}  // namespace
}  // namespace zeb::test
