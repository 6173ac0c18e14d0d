#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "conversion/ReducedImage.h"
#include "tests/cli/ZebProgram.h"
#include "tests/format/GoldenMovie.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using InfoProgram = ProgramTest;

TEST_F(InfoProgram, ShowsEveryFileAndGoesOnAfterAFailure) {
    golden::Bytes hostile = golden::movie();
    hostile[10] = 0x1b;
    store(m_folder.file("whole.zeb"), hostile);
    store(m_folder.file("torn.zeb"), golden::unfinishedMovie());
    store(m_folder.file("text.zeb"), "no movie\n");
    const auto result = zeb({"info", "whole.zeb", "text.zeb", ".", "missing", "torn.zeb"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.out, StartsWith("whole.zeb\n"
                                       "  Title          \\x1bL!\n"
                                       "  Size           16x8\n"
                                       "  Rate           2 frames per second\n"
                                       "  Mode           32 (16-bit high colour)\n"
                                       "  Frames         4\n"
                                       "  Duration       0:02\n"
                                       "  Sound          mono, 20000 Hz, 8 bits\n"
                                       "  Loop           yes\n"));
    EXPECT_THAT(result.out, HasSubstr("\n\ntorn.zeb\n"));
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 3);
    EXPECT_THAT(result.error, HasSubstr("zeb: text.zeb: Not a ZEB1 file\n"));
}

TEST_F(InfoProgram, SpeaksJson) {
    store(m_folder.file("torn.zeb"), golden::unfinishedMovie());
    EXPECT_EQ(nlohmann::json::parse(zeb({"info", "--json", "torn.zeb"}).out), nlohmann::json::parse(R"({
        "file": "torn.zeb", "title": "QL!", "width": 16, "height": 8, "framesPerSecond": 2, "mode": 32,
        "frames": 4, "seconds": 2, "soundChannels": 1, "soundRate": 20000, "loop": true, "fileSize": 92,
        "bytesPerSecond": 23.0, "largestBlock": 25, "finished": false})"));
}

TEST_F(InfoProgram, TellsWhatTheProgramCan) {
    EXPECT_THAT(zeb({"--help"}).out, HasSubstr("encode"));
    EXPECT_THAT(zeb({"--version"}).out, StartsWith("zeb "));
    if (std::ifstream("/dev/full")) {
        EXPECT_EQ(ChildProcess({"sh", "-c", "exec " ZEB_PROGRAM " --help > /dev/full"}, {}).finish().exitCode,
                  4);
    }
}

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

using ThumbnailProgram = ClipTest;

FrameImage picture(int width, int height, const std::vector<std::uint8_t>& pixels) {
    FrameImage image;
    image.width = width;
    image.height = height;
    image.pixels.assign(pixels.begin(), pixels.end());
    return image;
}

TEST(ReducedImage, IsTheMeanOfWhatItCovers) {
    // Three pixels to two: each covers one and a half.
    const FrameImage row = reducedImage(picture(3, 1, {0, 10, 20, 255, 90, 10, 50, 255, 30, 40, 80, 255}), 2);
    EXPECT_EQ(row.width, 2);
    EXPECT_EQ(row.height, 1);
    EXPECT_THAT(row.pixels, ElementsAre(30, 10, 30, 255, 50, 30, 70, 255));
    const FrameImage column = reducedImage(picture(1, 2, {1, 2, 3, 4, 4, 4, 4, 4}), 1);
    EXPECT_THAT(column.pixels, ElementsAre(3, 3, 4, 4));
    EXPECT_EQ(reducedImage(picture(1, 2, {1, 2, 3, 4, 4, 4, 4, 4}), 2).pixels.size(), 8U);
}

TEST_F(ThumbnailProgram, WritesTheFirstPictureWholeOrNothing) {
    ASSERT_EQ(zeb({"encode", "a.mov"}).exitCode, 0);
    store(m_folder.file("cut.zeb"), contents(m_folder.file("a.zeb")).substr(0, 60));
    store(m_folder.file("text.zeb"), "no movie");
    store(m_folder.file("a.png"), "old");
    for (const std::string wrong : {"cut.zeb", "text.zeb", "missing.zeb", "."})
        expectFailure({"thumbnail", wrong, "a.png"}, 3, wrong);
    expectFailure({"thumbnail", "a.zeb", "nowhere/picture/a.png"}, 4, "");
    expectFailure({"thumbnail", "a.zeb", "a.png", "--size", "0"}, 2, "");
    expectFailure({"thumbnail", "a.zeb", "./a.zeb"}, 4, "would replace the movie");
    EXPECT_EQ(contents(m_folder.file("a.png")), "old");

    EXPECT_EQ(zeb({"thumbnail", "a.zeb", "a.png", "--size", "48"}).exitCode, 0);
    // The header of a PNG: 48 x 36.
    EXPECT_EQ(contents(m_folder.file("a.png")).substr(12, 12), std::string("IHDR\0\0\0\x30\0\0\0\x24", 12));
}

using PlayProgram = ProgramTest;

/// A copy of the program, alone in a folder, with an application that only says what it was asked for.
TEST_F(PlayProgram, BecomesTheApplication) {
    fs::copy_file(zebCommand({}).front(), m_folder.file("zeb"));
    store(m_folder.file("-a movie.zeb"), "ZEB1");
    store(m_folder.file("video.zeb"), "video");
    const auto run = [&](const std::string& file) {
        const std::string path = "PATH=" + m_folder.file("nowhere");
        return ChildProcess({"env", path, m_folder.file("zeb"), "play", "--", file}, m_options).finish();
    };
    auto result = run("-a movie.zeb");
    EXPECT_EQ(result.exitCode, 1);
    EXPECT_THAT(result.error, HasSubstr("zebmaker"));

    store(m_folder.file("zebmaker"), "#!/bin/sh\nprintf '%s|' \"$@\"\nexit 7\n");
    fs::permissions(m_folder.file("zebmaker"), fs::perms::owner_all);
    result = run("-a movie.zeb");
    EXPECT_EQ(result.exitCode, 7);
    EXPECT_EQ(result.out, m_folder.file("-a movie.zeb") + "|");

    for (const std::string wrong : {"missing.zeb", "video.zeb"}) {
        result = run(wrong);
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.error, HasSubstr(wrong));
    }
}

}  // namespace
}  // namespace zeb::test
