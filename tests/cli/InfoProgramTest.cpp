#include <gmock/gmock.h>

#include <fstream>
#include <nlohmann/json.hpp>
#include <string_view>

#include "tests/cli/ChildProcess.h"
#include "tests/format/GoldenMovie.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::test {
namespace {

using ::testing::HasSubstr;

class InfoProgram : public ::testing::Test {
protected:
    std::string put(const std::string& name, const golden::Bytes& bytes) {
        const std::string path = m_folder.file(name);
        std::ofstream file(path, std::ios::binary);
        file << std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
        return path;
    }

    TemporaryFolder m_folder;
};

TEST_F(InfoProgram, ShowsEveryFileAndGoesOnAfterAFailure) {
    const std::string whole = put("whole.zeb", golden::movie());
    const std::string torn = put("torn.zeb", golden::unfinishedMovie());
    const std::string text = put("text.zeb", {'n', 'o', ' ', 'm', 'o', 'v', 'i', 'e', '\n'});
    const auto result = runZeb({"info", whole, text, m_folder.path(), m_folder.file("missing"), torn});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.out, HasSubstr(whole + "\n  Title          QL!\n"));
    EXPECT_THAT(result.out, HasSubstr("\n\n" + torn + "\n"));
    EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 3);
    EXPECT_THAT(result.error, HasSubstr("zeb: " + text + ": Kein ZEB1-File\n"));

    const auto json = nlohmann::json::parse(runZeb({"info", "--json", torn}).out);
    EXPECT_EQ(json["finished"], false);
    EXPECT_EQ(json["frames"], 4);
}

TEST_F(InfoProgram, PrintsHostileTitlesHarmlessly) {
    golden::Bytes hostile = golden::movie();
    hostile[10] = 0x1b;
    hostile[11] = '[';
    const auto result = runZeb({"info", put("a.zeb", hostile)});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.out, HasSubstr("Title          \\x1b[!\n"));
}

TEST_F(InfoProgram, SurvivesAnyBytes) {
    // The first byte of a size, a length, a count, an index entry; every other one with a cut behind it.
    bool isCut = false;
    for (const std::size_t place : {4u, 8u, 14u, 18u, 22u, 26u, 38u, 46u, 50u}) {
        golden::Bytes bytes = golden::movie();
        bytes[place] = 0xFF;
        if (isCut) bytes.resize(place + 2);
        isCut = !isCut;
        const auto result = runZeb({"info", put("a.zeb", bytes)});
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 3) << place << ": " << result.exitCode;
    }
}

TEST_F(InfoProgram, TellsWhatTheProgramCan) {
    const auto help = runZeb({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_THAT(help.out, HasSubstr("encode"));
    EXPECT_THAT(help.out, HasSubstr("130  interrupted"));
    EXPECT_THAT(runZeb({"encode", "--help"}).out, HasSubstr("--dither"));
    const auto version = runZeb({"--version"});
    EXPECT_EQ(version.exitCode, 0);
    EXPECT_THAT(version.out, ::testing::MatchesRegex("zeb [0-9]+\\.[0-9]+\\.[0-9]+\n"));
    if (std::ifstream("/dev/full")) {
        EXPECT_EQ(ChildProcess({"sh", "-c", "exec " ZEB_PROGRAM " --help > /dev/full"}, {}).finish().exitCode,
                  4);
    }
}

}  // namespace
}  // namespace zeb::test
