#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

/// A converted movie of some seconds, and the same as a crash in its last second would have left it.
class RepairProgram : public ClipTest {
protected:
    void SetUp() override {
        ClipTest::SetUp();
        if (IsSkipped()) return;
        ASSERT_EQ(zeb({"encode", "a.mov", "-o", "movie.zeb", "--title", "ab"}).exitCode, 0);
        std::string bytes = contents(m_movie);
        std::fill_n(bytes.begin() + 8 + 4 + 12, 4, '\0');
        bytes.resize(bytes.size() - 100);
        store(m_torn, bytes);
    }

    const std::string m_movie = m_folder.file("movie.zeb");
    const std::string m_torn = m_folder.file("torn.zeb");
    const std::string m_mended = m_folder.file("mended.zeb");
};

TEST_F(RepairProgram, VerifyTellsRightFromWrong) {
    const auto text = zeb({"verify", "movie.zeb", "torn.zeb", "missing"});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_THAT(text.out, HasSubstr("movie.zeb: right, "));
    EXPECT_THAT(text.out, HasSubstr("torn.zeb: wrong at byte 24: the movie was never finished\n"));
    EXPECT_THAT(text.error, HasSubstr("missing: No such file"));
    const auto json = nlohmann::json::parse(zeb({"verify", "--json", "torn.zeb"}).out);
    EXPECT_EQ(json["right"], false);
    EXPECT_EQ(json["fault"], "the movie was never finished");
    EXPECT_EQ(zeb({"verify", "movie.zeb"}).exitCode, 0);
    EXPECT_EQ(zeb({"verify", "missing"}).exitCode, 3);
}

TEST_F(RepairProgram, RepairsIntoANewFileOrInPlace) {
    const std::string torn = contents(m_torn), movie = contents(m_movie);
    EXPECT_EQ(zeb({"repair", "torn.zeb"}).exitCode, 2) << "in place only with --force";
    const auto result = zeb({"repair", "torn.zeb", "-o", "mended.zeb"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.out, EndsWith(" behind the last whole second cut off\n"));
    EXPECT_EQ(rightMovie(m_mended).seconds, 2);
    EXPECT_EQ(zeb({"repair", "torn.zeb", "-o", "mended.zeb"}).exitCode, 4) << "exists already";
    EXPECT_EQ(zeb({"repair", "torn.zeb", "-o", "torn.zeb", "--force"}).exitCode, 4) << "the input itself";
    EXPECT_EQ(contents(m_torn), torn);
    EXPECT_EQ(zeb({"repair", "torn.zeb", "--force"}).exitCode, 0);
    EXPECT_EQ(contents(m_torn), contents(m_mended));
    EXPECT_EQ(zeb({"repair", "movie.zeb", "--force"}).exitCode, 0);
    EXPECT_EQ(contents(m_movie), movie) << "a finished movie stays as it is";
}

TEST_F(RepairProgram, LeavesNothingBehindWhenThereIsNothingToRepair) {
    store(m_folder.file("text.zeb"), "no movie");
    const std::string header = contents(m_torn).substr(0, 200);
    store(m_folder.file("header.zeb"), header);
    for (const std::string file : {"text.zeb", "header.zeb", "missing", "."}) {
        expectFailure({"repair", file, "--force"}, 3, "");
        expectFailure({"repair", file, "-o", "mended.zeb", "--force"}, 3, "");
    }
    EXPECT_EQ(contents(m_folder.file("text.zeb")), "no movie");
    EXPECT_EQ(contents(m_folder.file("header.zeb")), header);
    expectFailure({"repair", "torn.zeb", "-o", "no/folder.zeb"}, 4, "");
}

}  // namespace
}  // namespace zeb::test
