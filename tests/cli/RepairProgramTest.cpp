#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>

#include "tests/cli/TestClip.h"
#include "tests/cli/ZebProgram.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;

/// A converted movie of some seconds, and the same as a crash in its last second would have left it.
class RepairProgram : public ::testing::Test {
protected:
    void SetUp() override {
        if (!canMakeClips()) GTEST_SKIP() << "no ffmpeg program";
        const std::string clip = m_folder.file("clip.mp4");
        makeSmallClip(clip, 3);
        ASSERT_EQ(runZeb({"encode", clip, "-o", m_movie, "--size", "64x32", "--fps", "5"}).exitCode, 0);
        std::string bytes = contents(m_movie);
        const std::size_t fields = 10 + (static_cast<unsigned char>(bytes[9]) + 1U) / 2 * 2;
        std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(fields) + 12, 4, '\0');
        bytes.resize(bytes.size() - 100);
        store(m_torn, bytes);
    }

    TemporaryFolder m_folder;
    const std::string m_movie = m_folder.file("movie.zeb");
    const std::string m_torn = m_folder.file("torn.zeb");
    const std::string m_mended = m_folder.file("mended.zeb");
};

TEST_F(RepairProgram, VerifyTellsRightFromWrong) {
    const auto text = runZeb({"verify", m_movie, m_torn, m_folder.file("missing")});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_THAT(text.out, HasSubstr(m_movie + ": right, "));
    EXPECT_THAT(text.out, HasSubstr(m_torn + ": wrong at byte "));
    EXPECT_THAT(text.out, HasSubstr(": the movie was never finished\n"));
    EXPECT_THAT(text.error, HasSubstr("missing: No such file"));

    const auto json = nlohmann::json::parse(runZeb({"verify", "--json", m_torn}).out);
    EXPECT_EQ(json["right"], false);
    EXPECT_EQ(json["fault"], "the movie was never finished");
    EXPECT_EQ(runZeb({"verify", m_movie}).exitCode, 0);
    EXPECT_EQ(runZeb({"verify", m_folder.file("missing")}).exitCode, 3);
}

TEST_F(RepairProgram, RepairsIntoANewFileOrInPlace) {
    const std::string torn = contents(m_torn);
    EXPECT_EQ(runZeb({"repair", m_torn}).exitCode, 2) << "in place only with --force";
    EXPECT_EQ(contents(m_torn), torn);

    const auto result = runZeb({"repair", m_torn, "-o", m_mended});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.out, EndsWith(" behind the last whole second cut off\n"));
    EXPECT_EQ(contents(m_torn), torn);
    EXPECT_EQ(runZeb({"verify", m_mended}).exitCode, 0);

    EXPECT_EQ(runZeb({"repair", m_torn, "-o", m_mended}).exitCode, 4) << "exists already";
    EXPECT_EQ(runZeb({"repair", m_torn, "-o", m_torn, "--force"}).exitCode, 4) << "the input itself";
    EXPECT_EQ(runZeb({"repair", m_torn, "--force"}).exitCode, 0);
    EXPECT_EQ(contents(m_torn), contents(m_mended));

    const std::string movie = contents(m_movie);
    EXPECT_EQ(runZeb({"repair", m_movie, "--force"}).exitCode, 0);
    EXPECT_EQ(contents(m_movie), movie) << "a finished movie stays as it is";
}

TEST_F(RepairProgram, LeavesNothingBehindWhenThereIsNothingToRepair) {
    const std::string text = m_folder.file("text.zeb"), headerOnly = m_folder.file("header.zeb");
    store(text, "no movie");
    store(headerOnly, contents(m_torn).substr(0, 200));
    for (const std::string& file : {text, headerOnly, m_folder.file("missing"), m_folder.path()}) {
        const std::string before = fs::is_regular_file(file) ? contents(file) : "";
        for (const bool inPlace : {false, true}) {
            const auto result = inPlace ? runZeb({"repair", file, "--force"})
                                        : runZeb({"repair", file, "-o", m_mended, "--force"});
            EXPECT_EQ(result.exitCode, 3) << file;
            EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
        }
        if (fs::is_regular_file(file)) {
            EXPECT_EQ(contents(file), before);
        }
    }
    EXPECT_EQ(runZeb({"repair", m_torn, "-o", m_folder.file("no/folder.zeb")}).exitCode, 4);
    EXPECT_FALSE(fs::exists(m_mended));
    EXPECT_EQ(std::distance(fs::directory_iterator(m_folder.path()), {}), 5);
}

}  // namespace
}  // namespace zeb::test
