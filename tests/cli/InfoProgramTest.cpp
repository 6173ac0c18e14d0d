#include <gmock/gmock.h>

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/cli/ZebProgram.h"
#include "tests/format/GoldenMovie.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

class InfoProgram : public ::testing::Test {
protected:
    std::string put(const std::string& name, const golden::Bytes& bytes) {
        store(m_folder.file(name), bytes);
        return m_folder.file(name);
    }

    TemporaryFolder m_folder;
};

TEST_F(InfoProgram, ShowsEveryFileAndGoesOnAfterAFailure) {
    const std::string whole = put("whole.zeb", golden::movie());
    const std::string torn = put("torn.zeb", golden::unfinishedMovie());
    const std::string text = put("text.zeb", {'n', 'o', ' ', 'm', 'o', 'v', 'i', 'e', '\n'});
    const auto result = runZeb({"info", whole, text, m_folder.path(), m_folder.file("missing"), torn});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.out, StartsWith(whole + "\n"
                                               "  Title          QL!\n"
                                               "  Size           16x8\n"
                                               "  Rate           2 frames per second\n"
                                               "  Mode           32 (16-bit high colour)\n"
                                               "  Frames         4\n"
                                               "  Duration       0:02\n"
                                               "  Sound          mono, 20000 Hz, 8 bits\n"
                                               "  Loop           yes\n"));
    EXPECT_THAT(result.out, HasSubstr("\n\n" + torn + "\n"));
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 3);
    EXPECT_THAT(result.error, HasSubstr("zeb: " + text + ": Kein ZEB1-File\n"));
}

TEST_F(InfoProgram, SpeaksJson) {
    const std::string torn = put("torn.zeb", golden::unfinishedMovie());
    EXPECT_EQ(nlohmann::json::parse(runZeb({"info", "--json", torn}).out),
              nlohmann::json({{"file", torn},
                              {"title", "QL!"},
                              {"width", 16},
                              {"height", 8},
                              {"framesPerSecond", 2},
                              {"mode", 32},
                              {"frames", 4},
                              {"seconds", 2},
                              {"soundChannels", 1},
                              {"soundRate", 20000},
                              {"loop", true},
                              {"fileSize", golden::movie().size()},
                              {"bytesPerSecond", 23.0},
                              {"largestBlock", 25},
                              {"finished", false}}));
}

TEST_F(InfoProgram, PrintsHostileTitlesHarmlessly) {
    golden::Bytes hostile = golden::movie();
    hostile[10] = 0x1b;
    hostile[11] = '[';
    const auto result = runZeb({"info", put("a.zeb", hostile)});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.out, HasSubstr("Title          \\x1b[!\n"));
}

}  // namespace
}  // namespace zeb::test
