#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/ChildProcess.h"
#include "tests/cli/StrictMovie.h"
#include "tests/cli/TestClip.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

std::string contents(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

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
    EXPECT_THAT(result.out, ::testing::Not(HasSubstr("\r")));

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

    const auto silent = runZeb({"encode", m_clip, "--audio", "off", "--size", "80x80", "--dither"});
    EXPECT_EQ(silent.error, "zeb: --dither has no effect in Mode 32\n");
    EXPECT_EQ(readStrictly(m_movie).soundChannels, 0);
    EXPECT_EQ(readStrictly(m_movie).height, 64);  // aspect kept: 80 x 60, at least 64
}

TEST_F(EncodeProgram, TellsProgressInJson) {
    const auto result = runZeb({"encode", m_clip, "--progress", "json", "--track", "7"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error,
              "zeb: " + m_clip + ": there is no sound track 7; track 1, the last one, is taken\n");
    std::vector<nlohmann::json> lines;
    std::istringstream stream(result.out);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(nlohmann::json::parse(line));
    ASSERT_GE(lines.size(), 4u);
    EXPECT_EQ(lines.front()["type"], "warning");
    EXPECT_EQ(lines[1]["type"], "start");
    EXPECT_EQ(lines[1]["frames"], 30);
    EXPECT_EQ(lines[1]["title"], "Tall ship");
    EXPECT_EQ(lines.back()["type"], "done");
    EXPECT_EQ(lines.back()["bytes"], fs::file_size(m_movie));
    std::int64_t frames = 0;
    for (const auto& line : lines) {
        if (line["type"] != "progress") continue;
        EXPECT_GE(line["frames"], frames);
        frames = line["frames"];
    }
    EXPECT_EQ(frames, 30);
}

TEST_F(EncodeProgram, DrawsABarOnATerminal) {
    ChildProcess::Options options;
    options.terminalColumns = 50;
    options.environment = {"TERM=xterm", "NO_COLOR=1"};
    const auto plain = runZeb({"encode", m_clip}, options);
    EXPECT_EQ(plain.exitCode, 0);
    EXPECT_THAT(plain.out, HasSubstr("\r["));
    EXPECT_THAT(plain.out, HasSubstr("100 %"));
    EXPECT_THAT(plain.out, ::testing::Not(HasSubstr("\x1b")));
    EXPECT_THAT(plain.out, ::testing::EndsWith("\n"));
    std::istringstream stream(plain.out);
    for (std::string drawing; std::getline(stream, drawing, '\r');) {
        const bool isSummary = drawing.find(m_movie) != std::string::npos;
        const auto width =
            std::count_if(drawing.begin(), drawing.end(), [](char c) { return (c & 0xC0) != 0x80; });
        EXPECT_TRUE(isSummary || width < 50) << drawing;
    }

    options.environment = {"TERM=xterm", "NO_COLOR="};
    EXPECT_THAT(runZeb({"encode", m_clip, "--force"}, options).out, HasSubstr("\x1b[32m"));
    options.environment = {"TERM=dumb"};
    EXPECT_THAT(runZeb({"encode", m_clip, "--force"}, options).out, ::testing::Not(HasSubstr("\r[")));
}

TEST_F(EncodeProgram, ReplacesOnlyWhenForced) {
    std::ofstream(m_movie) << "precious";
    const auto refused = runZeb({"encode", m_clip});
    EXPECT_EQ(refused.exitCode, 4);
    EXPECT_EQ(refused.error, "zeb: " + m_movie + ": exists already (use --force to replace it)\n");
    EXPECT_EQ(contents(m_movie), "precious");

    // An input that cannot be read costs nothing either.
    EXPECT_EQ(runZeb({"encode", m_folder.file("missing.mp4"), "-o", m_movie, "--force"}).exitCode, 3);
    EXPECT_EQ(contents(m_movie), "precious");

    EXPECT_EQ(runZeb({"encode", m_clip, "--force", "--progress", "none"}).exitCode, 0);
    EXPECT_EQ(readStrictly(m_movie).frames, 30);
}

TEST_F(EncodeProgram, NeverHarmsItsInput) {
    const std::string before = contents(m_clip);
    fs::create_hard_link(m_clip, m_folder.file("hard.zeb"));
    fs::create_symlink(m_clip, m_folder.file("soft.zeb"));
    for (const std::string& output : {m_clip, m_folder.file("hard.zeb"), m_folder.file("soft.zeb")}) {
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
    std::vector<std::string> words = {"encode", "--progress", "none", "--title", "[a,b]", "--fps", "1"};
    for (const std::string& name : names) {
        fs::copy(m_clip, m_folder.file(name));
        words.push_back(name);
    }
    const auto result = runZeb(words, options);
    EXPECT_EQ(result.exitCode, 0) << result.error;
    for (const std::string& name : names) {
        EXPECT_EQ(readStrictly(fs::path(m_folder.file(name)).replace_extension(".zeb")).frames, 3) << name;
    }
    EXPECT_THAT(runZeb({"info", "--json", "[a,b].zeb", "info.zeb"}, options).out,
                HasSubstr("\"title\":\"[a,b]\""));
}

TEST_F(EncodeProgram, GoesOnAfterAFailure) {
    fs::create_directory(m_folder.file("out"));
    fs::copy(m_clip, m_folder.file("-second.mov"));
    ChildProcess::Options options;
    options.folder = m_folder.path();
    std::ofstream(m_folder.file("text.mp4")) << "no video\n";
    const auto result = runZeb({"encode", "-o", "out", "--progress", "none", "--", "text.mp4", "missing.mp4",
                                "Tall ship.mov", "-second.mov"},
                               options);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.error, StartsWith("zeb: text.mp4: "));
    EXPECT_THAT(result.error, HasSubstr("\nzeb: missing.mp4: "));
    EXPECT_EQ(readStrictly(m_folder.file("out/Tall ship.zeb")).frames, 30);
    EXPECT_EQ(readStrictly(m_folder.file("out/-second.zeb")).frames, 30);
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
