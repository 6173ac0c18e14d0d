#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <vector>

#include "format/ZEBReader.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

using Words = std::vector<std::string>;

class PreviewProgram : public ClipTest {
protected:
    Words with(Words words, const Words& more) {
        words.insert(words.end(), more.begin(), more.end());
        return words;
    }
    std::string file(const std::string& name) { return m_folder.file(name); }
};

TEST_F(PreviewProgram, ShowsThePixelsOfTheMovie) {
    const Words combinations[] = {
        {"--mode", "32"},
        {"--mode", "4"},
        {"--mode", "4", "--dither", "--size", "80x64", "--stretch"},
        {"--mode", "4", "--colours", "natural"},
        {"--mode", "4", "--colours", "natural", "--dithering", "fine", "--tone", "2", "--toe", "0.1"},
        {"--dithering", "rows", "--gamma", "1.5", "--saturation", "50"},
        {"--fit", "pad", "--size", "128x128", "--pad-colour", "#804020", "--brightness", "20"},
        {"--fit", "fill", "--size", "64x128", "--rotate", "90", "--flip", "--contrast", "-30"},
        {"--crop", "100x80+20+10", "--pixel-shape", "ql", "--size", "128x64"},
        {"--crop", "auto", "--auto-levels", "--mode", "4", "--colours", "natural", "--sharpen", "0"},
    };
    for (const Words& words : combinations) {
        SCOPED_TRACE(::testing::PrintToString(words));
        ASSERT_EQ(zeb(with({"encode", "a.mov", "-o", "a.zeb", "--force"}, words)).exitCode, 0);
        ASSERT_EQ(zeb({"export", "a.zeb", "-o", "movie.png", "--frame", "13", "--force"}).exitCode, 0);
        const auto result = zeb(with({"preview", "a.mov", "--at", "1.35", "-o", "p.png", "--force"}, words));
        EXPECT_EQ(result.error, "");
        EXPECT_EQ(contents(file("p.png")), contents(file("movie.png")));
    }
}

TEST_F(PreviewProgram, ShowsOriginalsAndSheets) {
    const auto sizeOf = [this](const Words& words) {
        EXPECT_EQ(zeb(with({"preview", "a.mov", "-o", "p.png", "--force"}, words)).error, "");
        const std::string png = contents(file("p.png"));
        const auto number = [&png](std::size_t at) {
            return 256 * static_cast<std::uint8_t>(png[at + 2]) + static_cast<std::uint8_t>(png[at + 3]);
        };
        return std::pair(number(16), number(20));
    };
    EXPECT_EQ(sizeOf({}), std::pair(160, 120));
    EXPECT_EQ(sizeOf({"--original"}), std::pair(160, 120));
    const std::string original = contents(file("p.png"));
    EXPECT_EQ(sizeOf({"--mode", "4", "--original", "--brightness", "50"}), std::pair(160, 120));
    EXPECT_EQ(contents(file("p.png")), original) << "the look is not applied to the film's picture";
    EXPECT_EQ(sizeOf({"--side-by-side"}), std::pair(328, 120));
    EXPECT_EQ(sizeOf({"--sheet", "4"}), std::pair(2 * 328 + 8, 2 * 120 + 8));
}

TEST_F(PreviewProgram, ShowsThePartThatIsConverted) {
    ASSERT_EQ(zeb({"encode", "a.mov", "-o", "whole.zeb"}).exitCode, 0);
    ASSERT_EQ(zeb({"encode", "a.mov", "-o", "part.zeb", "--from", "0.62", "--to", "90%"}).exitCode, 0);
    ZEBReader whole(file("whole.zeb")), part(file("part.zeb"));
    whole.readHeader();
    part.readHeader();
    const int from = 6, to = 23;  // of 25 frames
    for (int i = 0; i < from; ++i)
        whole.nextFrame(false);
    for (int i = from; i < to; ++i)
        EXPECT_EQ(part.nextFrame(false).value().pixels, whole.nextFrame(false).value().pixels) << i;
    const auto sound = ZEBReader(file("part.zeb")).readAllAudio().bytes;
    const auto all = ZEBReader(file("whole.zeb")).readAllAudio().bytes;
    const std::ptrdiff_t begin = 2 * 20000 * from / 10, count = 2 * 20000 * (to - from) / 10;
    EXPECT_TRUE(std::equal(sound.begin(), sound.begin() + count, all.begin() + begin));
    EXPECT_EQ(std::count(sound.begin() + count, sound.end(), 128), 2 * 2 * 20000 - count);

    ASSERT_EQ(zeb({"export", "part.zeb", "-o", "movie.png", "--frame", "4"}).exitCode, 0);
    ASSERT_EQ(zeb({"preview", "a.mov", "-o", "p.png", "--from", "0.62", "--to", "90%", "--at", "1"}).exitCode,
              0);
    EXPECT_EQ(contents(file("p.png")), contents(file("movie.png")));
}

TEST_F(PreviewProgram, RefusesNonsenseBeforeItTouchesAnything) {
    const std::pair<Words, const char*> cases[] = {
        {{"--from", "9:99:99"}, "--from: \"9:99:99\" is not a time"},
        {{"--from", "5", "--to", "2"}, "The end is not after the start"},
        {{"--from", "3"}, "The start is not before the end of the film at 0:03"},
        {{"--crop", "161x10+0+0"}, "The crop 161x10+0+0 is not inside the picture of 160x120"},
        {{"--gamma", "-1"}, "--gamma: \"-1\" is not a number from 0.2 to 5"},
        {{"--pixel-shape", "0:1"}, "--pixel-shape: \"0:1\" is not square, ql or W:H"},
        {{"--colours", "blue"}, "--colours: \"blue\" is not one of levels, natural"},
        {{"--colours", "natural"}, "Natural colours exist in Mode 4 only"},
        {{"--settings", "missing.json"}, "missing.json: No such file or directory"},
        {{"--stretch", "--fit", "pad"}, "--fit excludes --stretch"},
    };
    store(file("old.png"), "old");
    store(file("old.zeb"), "old");
    for (const auto& [words, text] : cases) {
        expectFailure(
            with({"encode", "a.mov", "-o", "old.zeb", "--force", "--save-settings", "s.json"}, words), 2,
            text);
        expectFailure(
            with({"preview", "a.mov", "-o", "old.png", "--force", "--save-settings", "s.json"}, words), 2,
            text);
    }
    expectFailure({"preview", "a.mov", "-o", "p.png", "--at", "2.5"}, 2, "end of the film at 0:03");
    expectFailure({"preview", "a.mov", "-o", "p.png", "--to", "1", "--at", "1"}, 2,
                  "outside the chosen part");
    expectFailure({"preview", "a.mov", "-o", "old.png"}, 4, "exists already (use --force to replace it)");
    expectFailure({"encode", "a.mov", "--save-settings", "old.png"}, 4, "exists already");
    EXPECT_EQ(contents(file("old.png")), "old");
    EXPECT_EQ(contents(file("old.zeb")), "old");
}

TEST_F(PreviewProgram, SavesSettingsForOtherRuns) {
    ASSERT_EQ(zeb({"encode", "a.mov", "-o", "a.zeb", "--mode", "4", "--colours", "natural", "--tone", "2.5",
                   "--save-settings", "s.json"})
                  .exitCode,
              0);
    ASSERT_EQ(zeb({"encode", "a.mov", "-o", "b.zeb", "--settings", "s.json"}).exitCode, 0);
    EXPECT_EQ(contents(file("b.zeb")), contents(file("a.zeb")));
    // Options override the file, wherever they stand.
    ASSERT_EQ(
        zeb({"encode", "--mode", "32", "--colours", "levels", "a.mov", "-o", "c.zeb", "--settings", "s.json"})
            .exitCode,
        0);
    EXPECT_EQ(rightMovie(file("c.zeb")).header.mode, 32);
}

}  // namespace
}  // namespace zeb::test
