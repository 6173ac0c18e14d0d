#include <gmock/gmock.h>

#include <filesystem>

#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;

using PlayProgram = ProgramTest;

/// A copy of the program, alone in a folder, with an application that only says what it was asked for.
TEST_F(PlayProgram, BecomesTheApplication) {
    fs::copy_file(zebCommand({}).front(), m_folder.file("zeb"));
    store(m_folder.file("-a movie.zeb"), "movie");
    const auto run = [&](const std::string& file) {
        const std::string path = "PATH=" + m_folder.file("nowhere");
        return ChildProcess({"env", path, m_folder.file("zeb"), "play", "--", file}, m_options).finish();
    };
    auto result = run("-a movie.zeb");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, testing::HasSubstr("zebmaker"));

    store(m_folder.file("zebmaker"), "#!/bin/sh\nprintf '%s|' \"$@\"\nexit 7\n");
    fs::permissions(m_folder.file("zebmaker"), fs::perms::owner_all);
    result = run("-a movie.zeb");
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.out, m_folder.file("-a movie.zeb") + "|");

    result = run("missing.zeb");
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_EQ(result.out, "");
    EXPECT_THAT(result.error, testing::HasSubstr("missing.zeb"));
}

}  // namespace
}  // namespace zeb::test
