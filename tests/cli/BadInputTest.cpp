#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::StartsWith;

class BadInput : public ::testing::Test {
protected:
    void SetUp() override {
        if (!canMakeClips()) GTEST_SKIP() << "needs the ffmpeg program to make its clips";
        makeSmallClip(m_folder.file("good.mov"), 1);
        makeClip(m_folder.file("sound.wav"), {"-f", "lavfi", "-i", "sine=duration=1"});
        std::ofstream(m_folder.file("text.mp4")) << "This is no video.\n";
        std::ofstream(m_folder.file("empty.mp4"));
        std::ofstream(m_folder.file("list.m3u8")) << "#EXTM3U\n#EXTINF:1,\ngood.mov\n";
        std::ofstream(m_folder.file("file"));
        fs::create_directory(m_folder.file("folder"));
        fs::create_directory(m_folder.file("folder.zeb"));
        ASSERT_EQ(mkfifo(m_folder.file("pipe.mp4").c_str(), 0600), 0);
        m_before = m_folder.names();
    }
    void expectFailure(const std::vector<std::string>& words, int exitCode, const std::string& start) {
        ChildProcess::Options options;
        options.folder = m_folder.path();
        const auto result = runZeb(words, options);
        EXPECT_EQ(result.exitCode, exitCode) << start;
        EXPECT_EQ(result.out, "") << start;
        EXPECT_THAT(result.error, StartsWith("zeb: " + start));
        EXPECT_GT(result.error.size(), ("zeb: " + start).size());
        EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
        EXPECT_EQ(m_folder.names(), m_before) << start;
    }

    TemporaryFolder m_folder;
    std::vector<std::string> m_before;
};

TEST_F(BadInput, EndsInOneLineAndLeavesNothing) {
    for (const char* input : {"missing.mp4", "folder", "text.mp4", "empty.mp4", "sound.wav", "pipe.mp4",
                              "list.m3u8", "http://127.0.0.1/a.mp4", "img%03d.png", "/dev/zero"}) {
        expectFailure({"encode", input, "-o", "new.zeb"}, 3, input + std::string(": "));
    }
    expectFailure({"encode", "good.mov", "-o", "missing/new.zeb"}, 4, "missing/new.zeb: ");
    expectFailure({"encode", "good.mov", "-o", "missing/"}, 4, "missing/good.zeb: ");
    expectFailure({"encode", "good.mov", "-o", "file/new.zeb"}, 4, "file/new.zeb: ");
    expectFailure({"encode", "good.mov", "-o", "pipe.mp4", "--force"}, 4, "pipe.mp4: ");
    expectFailure({"encode", "folder", "--force"}, 4, "folder.zeb: ");
}

TEST_F(BadInput, IncludesNonsenseOptions) {
    const std::vector<std::string> cases[] = {
        {},
        {"info"},
        {"encode", ""},
        {"encode", "good.mov", "--nonsense"},
        {"encode", "good.mov", "--size", "512x"},
        {"encode", "good.mov", "--mode", "\x1b[2J\n"},
        {"encode", "good.mov", "folder", "-o", "new.zeb"},
    };
    for (const auto& words : cases) {
        expectFailure(words, 2, "");
    }
}

TEST_F(BadInput, IncludesDamage) {
    // Cut anywhere, and with its middle overwritten: a movie or one line, never a crash.
    const auto size = fs::file_size(m_folder.file("good.mov"));
    for (int part = 1; part < 8; ++part) {
        const std::string damaged = m_folder.file("damaged.mov");
        fs::copy_file(m_folder.file("good.mov"), damaged, fs::copy_options::overwrite_existing);
        if (part % 2 == 0) {
            fs::resize_file(damaged, size * static_cast<std::uintmax_t>(part) / 8);
        } else {
            std::fstream file(damaged, std::ios::in | std::ios::out | std::ios::binary);
            file.seekp(static_cast<std::streamoff>(size * static_cast<std::uintmax_t>(part) / 8));
            file << std::string(2000, '\x55');
        }
        const auto result = runZeb({"encode", damaged, "--force", "--progress", "none"});
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 3)
            << part << ": " << result.exitCode << result.error;
        EXPECT_EQ(fs::exists(m_folder.file("damaged.zeb")), result.exitCode == 0) << part;
        fs::remove(m_folder.file("damaged.zeb"));
    }
}

}  // namespace
}  // namespace zeb::test
