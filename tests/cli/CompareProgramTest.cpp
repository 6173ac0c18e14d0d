#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

using Json = nlohmann::json;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class CompareProgram : public ClipTest {
protected:
    /// Makes a movie of "a.mov" in high colour.
    void makeHigh() { ASSERT_EQ(zeb({"encode", "a.mov", "-o", "high.zeb", "--mode", "32"}).exitCode, 0); }
    /// Makes a movie of "a.mov" in four colours.
    void makeFour() {
        ASSERT_EQ(zeb({"encode", "a.mov", "-o", "four.zeb", "--mode", "4", "--dither"}).exitCode, 0);
    }
};

TEST_F(CompareProgram, PrintsTwoAlignedLinesPerMovie) {
    makeHigh();
    makeFour();
    store(m_folder.file("text.zeb"), "no movie\n");
    const auto result = zeb({"compare", "a.mov", "high.zeb", "text.zeb", "missing", "four.zeb"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.error, HasSubstr("zeb: text.zeb: Not a ZEB1 file\n"));
    EXPECT_THAT(result.error, HasSubstr("zeb: missing: "));
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 2);

    std::vector<std::string> lines;
    std::istringstream stream(result.out);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    ASSERT_EQ(lines.size(), 5);
    const char* starts[] = {"movie ", "high.zeb ", "  worst@time ", "four.zeb ", "  worst@time "};
    const std::size_t column = lines[0].find("detail");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_THAT(lines[i], StartsWith(starts[i]));
        ASSERT_GT(lines[i].size(), column);
        EXPECT_EQ(lines[i][column - 1], ' ');
        EXPECT_NE(lines[i][column], ' ');
    }
}

TEST_F(CompareProgram, JsonHasFiguresOfEachMovie) {
    makeHigh();
    makeFour();
    const auto result = zeb({"compare", "a.mov", "high.zeb", "four.zeb", "--json", "--moments", "0"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error, "");
    const std::size_t lineEnd = result.out.find('\n');
    const Json high = Json::parse(result.out.substr(0, lineEnd));
    const Json four = Json::parse(result.out.substr(lineEnd));
    for (const Json& movie : {high, four}) {
        EXPECT_EQ(movie["film"], "a.mov");
        EXPECT_EQ(movie["framesPerSecond"], 10);
        EXPECT_EQ(movie["frames"], 30);
        EXPECT_EQ(movie["moments"], 30);
        EXPECT_EQ(movie["momentsLeftOut"], 0);
        for (const char* field : {"deltaE40", "deltaE20"}) {
            EXPECT_GE(movie[field]["worst"], movie[field]["mean"]);
            EXPECT_LT(movie[field]["worstAt"], 3);
        }
        for (const char* field : {"detail", "ssim", "psnr", "blurredPsnr"})
            EXPECT_LE(movie[field]["worst"], movie[field]["mean"]);
    }
    EXPECT_EQ(high["movie"], "high.zeb");
    EXPECT_EQ(four["movie"], "four.zeb");
    // 5 or 6 bits of each channel remain in high colour.
    EXPECT_LT(high["deltaE40"]["mean"], 5);
    EXPECT_GT(high["psnr"]["mean"], 30);
    EXPECT_GT(high["ssim"]["mean"], .9);
    EXPECT_GT(four["deltaE40"]["mean"], 20);
    EXPECT_LT(four["psnr"]["mean"], 20);
}

TEST_F(CompareProgram, RejectsFilmsAndNamesThem) {
    store(m_folder.file("text.mov"), "no film\n");
    for (const char* film : {"missing.mov", "text.mov"}) {
        const auto result = zeb({"compare", film, "high.zeb", "four.zeb"});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.out, "");
        EXPECT_THAT(result.error, StartsWith(std::string("zeb: ") + film + ": "));
        EXPECT_EQ(std::ranges::count(result.error, '\n'), 1);
    }
    EXPECT_EQ(zeb({"compare", "a.mov"}).exitCode, 2);
    EXPECT_EQ(zeb({"compare", "a.mov", "four.zeb", "--moments", "-1"}).exitCode, 2);
}

TEST_F(CompareProgram, WarnsOfFilmOfOtherLength) {
    makeFour();
    makeClip(m_folder.file("b.mov"), {"-f", "lavfi", "-i", "testsrc=size=160x120:rate=10:duration=9"});
    const auto result = zeb({"compare", "b.mov", "four.zeb", "--moments", "2"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_THAT(result.error,
                HasSubstr("zeb: four.zeb: the movie lasts 0:03, a movie of this film would last 0:09; "));
}

}  // namespace
}  // namespace zeb::test
