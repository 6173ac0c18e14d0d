#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
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

/// Two seconds of 160 x 120 at 10 frames per second, with sound, in `a.zeb`.
class ExportProgram : public ::testing::Test {
protected:
    void SetUp() override {
        if (!canMakeClips()) GTEST_SKIP() << "needs the ffmpeg program to make its clips";
        makeSmallClip(m_folder.file("a.mov"), 2);
        m_options.folder = m_folder.path();
        ASSERT_EQ(runZeb({"encode", "a.mov", "--progress", "none"}, m_options).exitCode, 0);
        fs::remove(m_folder.file("a.mov"));
        m_before = m_folder.names();
    }
    ChildProcess::Result zebExport(std::vector<std::string> words) {
        words.insert(words.begin(), "export");
        return runZeb(words, m_options);
    }
    void expectFailure(const std::vector<std::string>& words, int exitCode, const std::string& text) {
        const auto result = zebExport(words);
        EXPECT_EQ(result.exitCode, exitCode) << text;
        EXPECT_THAT(result.error, StartsWith("zeb: "));
        EXPECT_THAT(result.error, HasSubstr(text));
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
        EXPECT_EQ(m_folder.names(), m_before) << text;
    }

    TemporaryFolder m_folder;
    ChildProcess::Options m_options;
    std::vector<std::string> m_before;
};

TEST_F(ExportProgram, MakesEveryFormat) {
    for (const char* name : {"b.mp4", "b.mkv", "b.webm", "b.gif"}) {
        const auto result = zebExport({"a.zeb", "-o", name, "--progress", "none"});
        EXPECT_EQ(result.exitCode, 0) << result.error;
        EXPECT_EQ(result.error, "");
        EXPECT_THAT(result.out, StartsWith(std::string(name) + ": 160x120, 20 frames, 0:02, "));
        // What was exported is a source again.
        const auto again =
            runZeb({"encode", name, "-o", "again.zeb", "--force", "--progress", "none"}, m_options);
        EXPECT_EQ(again.exitCode, 0) << again.error;
        const StrictMovie movie = readStrictly(m_folder.file("again.zeb"));
        // The last packet of WebM's sound goes a few milliseconds into a third second.
        EXPECT_EQ(movie.frames, std::string(name) == "b.webm" ? 30 : 20) << name;
        EXPECT_EQ(movie.soundChannels, std::string(name) == "b.gif" ? 0 : 2);
        // Without loss the pictures become the very same records.
        if (std::string(name) == "b.mkv") {
            EXPECT_EQ(movie.records, readStrictly(m_folder.file("a.zeb")).records);
        }
    }
    EXPECT_EQ(zebExport({"a.zeb", "-o", "b.wav"}).exitCode, 0);
    const auto sound = readStrictly(m_folder.file("a.zeb")).sound;
    EXPECT_EQ(contents(m_folder.file("b.wav")).substr(44), std::string(sound.begin(), sound.end()));
    EXPECT_EQ(zebExport({"a.zeb", "-o", "pictures/", "--from", "1.5"}).exitCode, 0);
    EXPECT_FALSE(fs::exists(m_folder.file("pictures/frame-00014.png")));
    EXPECT_TRUE(fs::exists(m_folder.file("pictures/frame-00015.png")));
    EXPECT_TRUE(fs::exists(m_folder.file("pictures/frame-00019.png")));
    EXPECT_EQ(zebExport({"a.zeb", "-o", "one.png", "--frame", "15"}).exitCode, 0);
    EXPECT_EQ(contents(m_folder.file("one.png")), contents(m_folder.file("pictures/frame-00015.png")));
}

TEST_F(ExportProgram, RefusesInOneLineAndLeavesNothing) {
    std::ofstream(m_folder.file("text.zeb")) << "This is no movie.\n";
    std::ofstream(m_folder.file("frame-00007.png"));
    fs::create_directory(m_folder.file("folder.mp4"));
    fs::create_hard_link(m_folder.file("a.zeb"), m_folder.file("link.mp4"));
    ASSERT_EQ(mkfifo(m_folder.file("pipe.mp4").c_str(), 0600), 0);
    ASSERT_EQ(runZeb({"repair", "a.zeb", "-o", "b.mp4"}, m_options).exitCode, 0);
    m_before = m_folder.names();
    expectFailure({"missing.zeb", "-o", "n.mp4"}, 3, "missing.zeb: No such file or directory");
    expectFailure({".", "-o", "n.mp4"}, 3, "Is a directory");
    expectFailure({"pipe.mp4", "-o", "n.mp4"}, 3, "Invalid argument");
    expectFailure({"text.zeb", "-o", "n.mp4"}, 3, "text.zeb: Kein ZEB1-File");
    expectFailure({"a.zeb", "-o", "b.mp4"}, 4, "b.mp4: exists already (use --force to replace it)");
    expectFailure({"a.zeb", "-o", "frame-%05d.png"}, 4, "frame-00007.png: exists already");
    expectFailure({"a.zeb", "-o", "link.mp4", "--force"}, 4, "link.mp4: is the movie itself");
    expectFailure({"a.zeb", "-o", "a.zeb", "--format", "mp4", "--force"}, 4, "a.zeb: is the movie itself");
    expectFailure({"a.zeb", "-o", "pipe.mp4", "--force"}, 4, "pipe.mp4: not a regular file");
    expectFailure({"a.zeb", "-o", "missing/n.mp4"}, 4, "missing/n.mp4: No such file or directory");
    expectFailure({"a.zeb", "-o", "missing/deeper/"}, 4, "No such file or directory");
    expectFailure({"a.zeb", "-o", "n.png", "--frame", "20"}, 2, "There is nothing at frame 20");
    expectFailure({"a.zeb", "-o", "n.gif", "--from", "1:00"}, 2, "There is nothing at 60 s");
    expectFailure({"a.zeb", "-o", "n.png"}, 2, "names one picture");
}

TEST_F(ExportProgram, ReplacesOnlyByWhatIsComplete) {
    std::ofstream(m_folder.file("b.mkv")) << "precious";
    m_options.fileSizeLimit = 100'000;
    const auto full = zebExport({"a.zeb", "-o", "b.mkv", "--force"});
    EXPECT_EQ(full.exitCode, 4);
    EXPECT_EQ(full.error, "zeb: b.mkv: File too large\n");
    EXPECT_EQ(contents(m_folder.file("b.mkv")), "precious");
    EXPECT_EQ(m_folder.names(), (std::vector<std::string>{"a.zeb", "b.mkv"}));
    m_options.fileSizeLimit.reset();
    EXPECT_EQ(zebExport({"a.zeb", "-o", "b.mkv", "--force"}).exitCode, 0);
    EXPECT_GT(fs::file_size(m_folder.file("b.mkv")), 100'000U);
}

TEST_F(ExportProgram, TellsProgressInJsonOverDamage) {
    fs::resize_file(m_folder.file("a.zeb"), fs::file_size(m_folder.file("a.zeb")) - 100);
    const auto result = zebExport({"a.zeb", "-o", "b.mkv", "--progress", "json"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    std::istringstream stream(result.out);
    std::vector<nlohmann::json> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(nlohmann::json::parse(line));
    EXPECT_EQ(lines.back()["type"], "done");
    EXPECT_EQ(lines.back()["frames"], 19);
    EXPECT_EQ(lines.back()["bytes"], fs::file_size(m_folder.file("b.mkv")));
    const auto isStart = [](const auto& line) { return line["type"] == "start"; };
    const auto start = std::ranges::find_if(lines, isStart);
    ASSERT_NE(start, lines.end());
    EXPECT_EQ((*start)["frames"], 19);
}

TEST_F(ExportProgram, LeavesNothingWhenInterrupted) {
    makeLongClip(m_folder.file("long.mkv"), 320, 240, 30, 30);
    ASSERT_EQ(runZeb({"encode", "long.mkv", "--progress", "none"}, m_options).exitCode, 0);
    std::ofstream(m_folder.file("b.webm")) << "precious";
    const auto before = m_folder.names();
    for (const char* output : {"b.webm", "new/"}) {
        ChildProcess zeb(zebCommand({"export", "long.zeb", "-o", output, "--force", "--progress", "json"}),
                         m_options);
        while (const auto line = zeb.readLine()) {
            if (nlohmann::json::parse(*line)["type"] == "progress") break;
        }
        const auto start = std::chrono::steady_clock::now();
        zeb.sendSignal(SIGINT);
        const auto result = zeb.finish();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_EQ(result.error, "zeb: long.zeb: interrupted\n");
        EXPECT_EQ(m_folder.names(), before);
        EXPECT_EQ(contents(m_folder.file("b.webm")), "precious");
    }
}

}  // namespace
}  // namespace zeb::test
