#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/cli/ZebProgram.h"
#include "tests/format/GoldenMovie.h"

namespace zeb::test {
namespace {

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
    EXPECT_THAT(result.error, HasSubstr("zeb: text.zeb: Kein ZEB1-File\n"));
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

}  // namespace
}  // namespace zeb::test
