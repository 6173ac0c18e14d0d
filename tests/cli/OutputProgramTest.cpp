#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

/// Every command that writes a file, combined with every kind of existing output.
class OutputProgram : public ClipTest {
protected:
    /// Creates "out/WHAT" as the kind of file that `what` names.
    void put(const std::string& what) {
        const std::string place = m_folder.file("out/" + what);
        const std::string target = m_folder.file("out/target");
        const bool isLink = what.starts_with("link to ");
        const std::string kind = isLink ? what.substr(8) : what;
        const std::string path = isLink ? target : place;
        if (kind == "file") store(path, "old");
        if (kind == "folder") fs::create_directory(path);
        if (kind == "pipe") mkfifo(path.c_str(), 0600);
        if (kind == "device") mknod(path.c_str(), S_IFCHR | 0600, makedev(1, 3));
        if (isLink) fs::create_symlink("target", place);
    }
    struct Standing {
        fs::file_status itself;
        std::string text;  ///< content of the regular file that it refers to

        bool operator==(const Standing& other) const {
            return itself.type() == other.itself.type() && text == other.text;
        }
    };
    Standing at(const std::string& name) const {
        const std::string path = m_folder.file(name);
        std::error_code ignored;
        return {fs::symlink_status(path, ignored), fs::is_regular_file(path, ignored) ? contents(path) : ""};
    }
};

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
    enum class When { always, forced, never };
    const struct {
        std::string what;
        When isMade;
        bool isFolder = false;
    } cases[] = {
        {"nothing", When::always},      {"file", When::forced},
        {"link to file", When::forced}, {"link to nothing", When::forced},
        {"folder", When::never, true},  {"link to folder", When::never, true},
        {"pipe", When::never},          {"link to pipe", When::never},
        {"device", When::never},        {"link to device", When::never},
        {"missing/file", When::never},  {"missing/", When::never},
    };
    for (const auto& command : commands) {
        for (const auto& [what, isMade, isFolder] : cases) {
            for (const bool isForced : {false, true}) {
                SCOPED_TRACE(command.words[0] + ", " + what + (isForced ? ", forced" : ""));
                if (what.ends_with("device") && geteuid() != 0) continue;
                if ((isFolder || what == "missing/") && command.takesFolders) continue;
                if (isForced && command.replacesUnasked) continue;
                fs::remove_all(m_folder.file("out"));
                fs::create_directory(m_folder.file("out"));
                put(what);
                const auto names = m_folder.names();
                const Standing before = at("out/" + what), target = at("out/target");
                std::vector<std::string> words = command.words;
                words.push_back("out/" + what);
                if (isForced) words.push_back("--force");
                const auto result = zeb(words);
                const bool mayReplace = isForced || command.replacesUnasked;
                if (isMade == When::always || (isMade == When::forced && mayReplace)) {
                    EXPECT_EQ(result.exitCode, 0) << result.error;
                    EXPECT_EQ(at("out/" + what).itself.type(), fs::file_type::regular);
                    EXPECT_GT(fs::file_size(m_folder.file("out/" + what)), 100U);
                } else {
                    EXPECT_EQ(result.exitCode, 4);
                    EXPECT_THAT(result.error, ::testing::StartsWith("zeb: out/" + what + ": "));
                    EXPECT_TRUE(at("out/" + what) == before);
                    EXPECT_EQ(m_folder.names(), names);
                }
                // The target of a link is unchanged, and no file set aside is left.
                EXPECT_TRUE(at("out/target") == target);
                const auto rest = std::distance(fs::directory_iterator(m_folder.file("out")), {});
                EXPECT_LE(rest, 2);
                EXPECT_FALSE(fs::exists(m_folder.file("out/" + what + ".previous")));
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
