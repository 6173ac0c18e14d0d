#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;

/// A copy of the program, alone in a folder, with an application that only says what it was asked for.
TEST(PlayProgram, BecomesTheApplication) {
    const TemporaryFolder folder;
    const std::string zeb = folder.file("zeb");
    fs::copy_file(zebCommand({}).front(), zeb);
    const std::string movie = folder.file("-a movie.zeb");
    std::ofstream(movie) << "movie";
    const auto run = [&](const std::string& file) {
        ChildProcess::Options options;
        options.folder = folder.path();
        const std::string path = "PATH=" + folder.file("nowhere");
        return ChildProcess({"env", path, zeb, "play", "--", file}, options).finish();
    };
    auto result = run("-a movie.zeb");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, testing::HasSubstr("zebmaker"));

    const std::string application = folder.file("zebmaker");
    std::ofstream(application) << "#!/bin/sh\nprintf '%s|' \"$@\"\nexit 7\n";
    fs::permissions(application, fs::perms::owner_all);
    result = run("-a movie.zeb");
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.out, movie + "|");

    result = run("missing.zeb");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.error, testing::HasSubstr("missing.zeb"));
}

}  // namespace
}  // namespace zeb::test
