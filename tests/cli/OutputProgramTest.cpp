#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;

/// Every command that writes a file, combined with every kind of existing output.
using OutputProgram = ClipTest;

TEST_F(OutputProgram, EveryCommandRejectsSameOutputs) {
    ASSERT_EQ(zeb({"encode", "a.mov", "-o", "movie.zeb", "--progress", "none"}).exitCode, 0);
    const struct {
        std::vector<std::string> words;
        bool replacesUnasked = false;
        bool takesFolders = false;  ///< creates a file with a proposed name in it
    } commands[] = {
        {{"encode", "a.mov", "--fps", "1", "--progress", "none", "-o"}, false, true},
        {{"export", "movie.zeb", "--format", "wav", "--progress", "none", "-o"}, false, true},
        {{"repair", "movie.zeb", "-o"}},
        {{"thumbnail", "movie.zeb"}, true},
    };
    for (const auto& command : commands) {
        for (const std::string what : {"nothing", "file", "link", "folder", "pipe", "missing/file"}) {
            for (const bool isForced : {false, true}) {
                if (what == "folder" && command.takesFolders) continue;
                if (isForced && command.replacesUnasked) continue;
                fs::remove_all(m_folder.file("out"));
                fs::create_directories(m_folder.file("out/folder"));
                store(m_folder.file("out/file"), "old");
                fs::create_symlink("file", m_folder.file("out/link"));
                ASSERT_EQ(mkfifo(m_folder.file("out/pipe").c_str(), 0600), 0);
                const std::string output = "out/" + what, path = m_folder.file(output);
                std::vector<std::string> words = command.words;
                words.push_back(output);
                if (isForced) words.push_back("--force");
                const bool mayReplace = isForced || command.replacesUnasked;
                if (what == "nothing" || (mayReplace && (what == "file" || what == "link"))) {
                    const auto result = zeb(words);
                    EXPECT_EQ(result.exitCode, 0) << result.error;
                    EXPECT_EQ(fs::symlink_status(path).type(), fs::file_type::regular);
                    EXPECT_GT(fs::file_size(path), 100U);
                } else {
                    const auto type = fs::symlink_status(path).type();
                    expectFailure(words, 4, output + ": ");
                    EXPECT_EQ(fs::symlink_status(path).type(), type);
                }
                if (what != "file") {
                    EXPECT_EQ(contents(m_folder.file("out/file")), "old")
                        << "a link is replaced, not its target";
                }
            }
        }
    }
    expectFailure({"thumbnail", "movie.zeb", ""}, 4, "has no name");
    expectFailure({"repair", "movie.zeb", "-o", ""}, 4, "has no name");
}

TEST_F(OutputProgram, FullStandardOutputFailsEstimate) {
    if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "needs /dev/full";
    const std::string line = "exec " ZEB_PROGRAM " encode --estimate a.mov > /dev/full";
    EXPECT_EQ(ChildProcess({"sh", "-c", line}, m_options).finish().exitCode, 4);
}

}  // namespace
}  // namespace zeb::test
