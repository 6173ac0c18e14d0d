#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "platform/text/NumberText.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

/// Adds the movie `a.zeb`: three seconds of 160 x 120 at 10 frames per second, with sound.
class ExportProgram : public ClipTest {
protected:
    void SetUp() override {
        ClipTest::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(zeb({"encode", "a.mov", "--progress", "none"}).exitCode, 0);
    }
};

TEST_F(ExportProgram, WritesEveryFormat) {
    for (const std::string name : {"b.mp4", "b.mkv", "b.webm", "b.gif"}) {
        const auto result = zeb({"export", "a.zeb", "-o", name, "--progress", "none"});
        EXPECT_EQ(result.exitCode, 0) << result.error;
        EXPECT_EQ(result.error, "");
        EXPECT_EQ(result.out, name + ": 160x120, 30 frames, 0:03, " +
                                  byteText(fs::file_size(m_folder.file(name))) + "\n");
        // Exported files can be converted again.
        EXPECT_EQ(zeb({"encode", name, "-o", "again.zeb", "--force"}).exitCode, 0) << name;
        const ZEBHeader header = rightMovie(m_folder.file("again.zeb")).header;
        // In WebM, sound ends a few milliseconds after the pictures. This must not add a second.
        EXPECT_EQ(header.frameCount, 30) << name;
        EXPECT_EQ(header.audioChannels, name == "b.gif" ? 0 : 2);
    }
    // Lossless pictures become the same records.
    for (const std::string source : {"a.mov", "b.mkv"})
        zeb({"encode", source, "-o", source + ".zeb", "--audio", "off", "--title", "a"});
    EXPECT_TRUE(contents(m_folder.file("a.mov.zeb")) == contents(m_folder.file("b.mkv.zeb")));
    // "%d" numbers pictures only.
    store(m_folder.file("0.wav"), "precious");
    EXPECT_EQ(zeb({"export", "a.zeb", "-o", "%d.wav"}).exitCode, 0);
    EXPECT_EQ(fs::file_size(m_folder.file("%d.wav")), 44 + 3 * 2 * 20000U);
    const auto shown = zeb({"export", "a.zeb", "-o", "pictures/", "--from", "2.5", "--progress", "plain"});
    EXPECT_EQ(shown.exitCode, 0);
    EXPECT_THAT(
        shown.out,
        StartsWith("a.zeb -> pictures/frame-%05d.png: 160x120, 10 frames per second, 0:01, Mode 32\n"));
    const std::string lines =
        zeb({"export", "a.zeb", "-o", "c.mkv", "--from", "1", "--progress", "json"}).out;
    const auto start = nlohmann::json::parse(lines.substr(0, lines.find('\n')));
    EXPECT_EQ(start["seconds"], 2);
    EXPECT_EQ(start["sourceSeconds"], 3);
    const std::string warning = "--interpretation has no effect in Mode ";
    EXPECT_EQ(zeb({"export", "a.zeb", "-o", "d.mkv", "--interpretation", "rgb565be"}).error, "");
    EXPECT_EQ(zeb({"encode", "a.mov", "-o", "four.zeb", "--mode", "4"}).exitCode, 0);
    for (const std::string reading : {"rgb565le", "rgb565be"}) {
        const auto four = zeb({"export", "four.zeb", "-o", "d.mkv", "--force", "--interpretation", reading});
        EXPECT_EQ(four.error, reading == "rgb565be" ? "zeb: four.zeb: " + warning + "4\n" : "");
        EXPECT_THAT(four.out, HasSubstr(", Mode 4\n"));
    }
    EXPECT_FALSE(fs::exists(m_folder.file("pictures/frame-00024.png")));
    EXPECT_TRUE(fs::exists(m_folder.file("pictures/frame-00029.png")));
    EXPECT_EQ(zeb({"export", "a.zeb", "-o", "one.png", "--frame", "25"}).exitCode, 0);
    EXPECT_EQ(contents(m_folder.file("one.png")), contents(m_folder.file("pictures/frame-00025.png")));
}

TEST_F(ExportProgram, FailuresPrintOneLineLeaveNothing) {
    store(m_folder.file("text.zeb"), "This is no movie.\n");
    store(m_folder.file("b.mp4"), "precious");
    store(m_folder.file("frame-00007.png"), "precious");
    fs::create_hard_link(m_folder.file("a.zeb"), m_folder.file("link.mp4"));
    ASSERT_EQ(mkfifo(m_folder.file("pipe.mp4").c_str(), 0600), 0);
    const struct {
        std::vector<std::string> words;
        int exitCode;
        const char* text;
    } cases[] = {
        {{"missing.zeb", "-o", "n.mp4"}, 3, "missing.zeb: No such file or directory"},
        {{".", "-o", "n.mp4"}, 3, "Is a directory"},
        {{"pipe.mp4", "-o", "n.mp4"}, 3, "pipe.mp4: not a regular file"},
        {{"text.zeb", "-o", "n.mp4"}, 3, "text.zeb: Not a ZEB1 file"},
        {{"a.zeb", "-o", "b.mp4"}, 4, "b.mp4: exists already (use --force to replace it)"},
        {{"a.zeb", "-o", "frame-%05d.png"}, 4, "frame-00007.png: exists already"},
        {{"a.zeb", "-o", "link.mp4", "--force"}, 4, "link.mp4: is the input itself"},
        {{"a.zeb", "-o", "pipe.mp4", "--force"}, 4, "pipe.mp4: not a regular file"},
        {{"a.zeb", "-o", "missing/n.mp4"}, 4, "missing/n.mp4: there is no folder \"missing\""},
        {{"a.zeb", "-o", "n.png", "--frame", "30"}, 2, "frame 30 is past the end"},
        {{"a.zeb", "-o", "n.png"}, 2, "names one picture"},
    };
    for (auto [words, exitCode, text] : cases) {
        words.insert(words.begin(), "export");
        expectFailure(words, exitCode, text);
    }
}

TEST_F(ExportProgram, FullDiskOrInterruptLeavesNothing) {
    makeLongClip(m_folder.file("long.mkv"), "320x240", 30, 30);
    ASSERT_EQ(zeb({"encode", "long.mkv", "--progress", "none"}).exitCode, 0);
    store(m_folder.file("b.webm"), "precious");
    const auto before = m_folder.names();
    for (const char* output : {"b.webm", "new/"}) {
        ChildProcess zeb(zebCommand({"export", "long.zeb", "-o", output, "--force", "--progress", "json"}),
                         m_options);
        awaitFrames(zeb, 0);
        const auto start = std::chrono::steady_clock::now();
        zeb.sendSignal(SIGINT);
        const auto result = zeb.finish();
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_EQ(result.error, "zeb: long.zeb: interrupted\n");
        EXPECT_EQ(m_folder.names(), before);
    }
    m_options.fileSizeLimit = 10'000;
    expectFailure({"export", "a.zeb", "-o", "b.webm", "--force", "--progress", "none"}, 4,
                  "b.webm: File too large\n");
    EXPECT_EQ(contents(m_folder.file("b.webm")), "precious");
}

}  // namespace
}  // namespace zeb::test
