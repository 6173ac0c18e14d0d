#include <gmock/gmock.h>
#include <signal.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "format/ZEBWriter.h"
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

TEST_F(InfoProgram, ShowsEveryFileDespiteFailures) {
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

TEST_F(InfoProgram, ErrorsFollowLanguageOfEnvironment) {
    store(m_folder.file("text.zeb"), "no movie\n");
    m_options.environment = {"LC_ALL=C"};
    EXPECT_EQ(zeb({"verify", "text.zeb"}).error, "zeb: text.zeb: Not a ZEB1 file\n");
    m_options.environment = {"LC_ALL=de_DE.UTF-8", "LANGUAGE="};
    EXPECT_EQ(zeb({"verify", "text.zeb"}).error, "zeb: text.zeb: Kein ZEB1-File\n");
}

TEST_F(InfoProgram, EveryCommandRejectsRemoteAddresses) {
    const std::string address = "http://host/a.mov";
    const std::vector<std::string> cases[] = {{"encode", address},
                                              {"encode", address, "--estimate"},
                                              {"export", address, "-o", "a.wav"},
                                              {"info", address},
                                              {"verify", address},
                                              {"repair", address, "--force"},
                                              {"thumbnail", address, "a.png"},
                                              {"play", address}};
    for (const auto& arguments : cases)
        expectFailure(arguments, 3, address + ": Only files on this computer can be opened\n");
}

TEST_F(InfoProgram, PrintsAllFieldsAsJSON) {
    store(m_folder.file("torn.zeb"), golden::unfinishedMovie());
    EXPECT_EQ(nlohmann::json::parse(zeb({"info", "--json", "torn.zeb"}).out), nlohmann::json::parse(R"({
        "file": "torn.zeb", "title": "QL!", "width": 16, "height": 8, "framesPerSecond": 2, "mode": 32,
        "frames": 4, "seconds": 2, "soundChannels": 1, "soundRate": 20000, "loop": true, "fileSize": 92,
        "bytesPerSecond": 23.0, "largestBlock": 25, "finished": false})"));
}

TEST_F(InfoProgram, PrintsHelpAndReportsUnwritableOutput) {
    EXPECT_THAT(zeb({"--help"}).out, HasSubstr("\n  encode                    Convert"));
    EXPECT_THAT(zeb({"--version"}).out, StartsWith("zeb "));
    if (std::ifstream("/dev/full")) {
        store(m_folder.file("a.zeb"), golden::movie());
        for (const std::string words : {"--help", "info a.zeb", "verify a.zeb"}) {
            const std::string line = "exec " ZEB_PROGRAM " " + words + " > /dev/full";
            EXPECT_EQ(ChildProcess({"sh", "-c", line}, m_options).finish().exitCode, 4) << words;
        }
    }
}

/// A converted movie of three seconds, and a copy of it as after a crash in its last second.
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

TEST_F(RepairProgram, VerifyDistinguishesValidAndInvalidMovies) {
    const auto text = zeb({"verify", "movie.zeb", "torn.zeb", "missing"});
    EXPECT_EQ(text.exitCode, 1);
    EXPECT_THAT(text.out, HasSubstr("movie.zeb: valid, "));
    EXPECT_THAT(text.out, HasSubstr("torn.zeb: error at byte 24: the movie was never finished\n"));
    EXPECT_THAT(text.error, HasSubstr("missing: No such file"));
    const auto json = nlohmann::json::parse(zeb({"verify", "--json", "torn.zeb"}).out);
    EXPECT_EQ(json["right"], false);
    EXPECT_EQ(json["fault"], "the movie was never finished");
    EXPECT_EQ(zeb({"verify", "movie.zeb"}).exitCode, 0);
    EXPECT_EQ(zeb({"verify", "missing"}).exitCode, 3);
}

TEST_F(RepairProgram, RepairsIntoNewFileOrInPlace) {
    const std::string torn = contents(m_torn), movie = contents(m_movie);
    EXPECT_EQ(zeb({"repair", "torn.zeb"}).exitCode, 2) << "in place only with --force";
    const auto result = zeb({"repair", "torn.zeb", "-o", "mended.zeb"});
    EXPECT_EQ(result.exitCode, 0) << result.error;
    EXPECT_THAT(result.out, EndsWith(" after the last complete second\n"));
    EXPECT_EQ(rightMovie(m_mended).seconds, 2);
    EXPECT_EQ(zeb({"repair", "torn.zeb", "-o", "mended.zeb"}).exitCode, 4) << "exists already";
    expectFailure({"repair", "torn.zeb", "-o", "torn.zeb", "--force"}, 4,
                  "leave -o away to repair it in place");
    EXPECT_EQ(contents(m_torn), torn);
    EXPECT_EQ(zeb({"repair", "torn.zeb", "--force"}).exitCode, 0);
    EXPECT_EQ(contents(m_torn), contents(m_mended));
    EXPECT_EQ(zeb({"repair", "movie.zeb", "--force"}).exitCode, 0);
    EXPECT_EQ(contents(m_movie), movie) << "a finished movie stays as it is";
}

TEST_F(RepairProgram, KeepsFinishedMovieRescuesSecondsAfterDamage) {
    const auto longAgo = fs::file_time_type::clock::now() - std::chrono::hours(24 * 365);
    const std::string movie = contents(m_movie);
    std::string damaged = movie;
    const std::size_t header = 8 + 2 + 2 + 24 + 4 * 3, sound = 2 * 20000;
    damaged[header + 4 + 4 + sound + 3] ^= 1;  // size field of the first frame
    for (const std::string& bytes : {movie, damaged}) {
        const bool isWhole = bytes == movie;
        store(m_movie, bytes);
        fs::last_write_time(m_movie, longAgo);
        const auto inPlace = zeb({"repair", "movie.zeb", "--force"});
        EXPECT_EQ(inPlace.exitCode, isWhole ? 0 : 1);
        EXPECT_EQ(inPlace.error, isWhole
                                     ? ""
                                     : "zeb: movie.zeb: second 0 (at byte 48) is damaged; complete seconds "
                                       "after it: 2; to keep them, name a new movie with -o\n");
        EXPECT_EQ(contents(m_movie), bytes);
        EXPECT_EQ(fs::last_write_time(m_movie), longAgo);
        const auto copied = zeb({"repair", "movie.zeb", "-o", "mended.zeb", "--force"});
        EXPECT_EQ(copied.exitCode, 0) << copied.error;
        EXPECT_EQ(copied.out.find("; second 0 left out\n") != std::string::npos, !isWhole) << copied.out;
        EXPECT_EQ(rightMovie(m_mended).seconds, isWhole ? 3 : 2);
        EXPECT_EQ(contents(m_mended) == movie, isWhole);
    }
}

TEST_F(RepairProgram, NothingToRepairLeavesNoFile) {
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

/// A movie of one picture with 8192 x 8192 pixels: a small file that needs more memory than the limit.
void storeLargePicture(const std::string& path) {
    constexpr int side = 8192, longestRun = 129;
    std::vector<std::uint8_t> record = {2, 32, 0, 0x40, 32, 0, 32, 0, 0,   0,   0,   0,   0, 0, 0, 12,
                                        0, 0,  0, 0,    0,  0, 0,  0, 'R', 'L', 'E', '2', 8, 0, 0, 0};
    for (int pixels = 0; pixels < side * side; pixels += longestRun)
        record.insert(record.end(), {0x80, 1, 2});
    ZEBWriter writer(path, {"", side, side, 1, 32, 1, 1, 0, false});
    writer.writeSecond({}, std::vector<std::span<const std::uint8_t>>{record});
    writer.finish();
}

TEST_F(InfoProgram, ReportsLackOfMemory) {
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__) || defined(__clang__)
    GTEST_SKIP() << "a sanitizer needs more memory than the limit leaves";
#endif
    storeLargePicture(m_folder.file("a.zeb"));
    for (const std::string words :
         {"verify a.zeb", "thumbnail a.zeb a.png", "export a.zeb -o a.png --frame 0"}) {
        const std::string line = "ulimit -v 400000; exec " ZEB_PROGRAM " " + words;
        const auto result = ChildProcess({"sh", "-c", line}, m_options).finish();
        EXPECT_EQ(result.exitCode, 1) << words;
        EXPECT_EQ(result.error, "zeb: a.zeb: Not enough memory\n") << words;
    }
    EXPECT_THAT(m_folder.names(), ElementsAre("a.zeb"));
    EXPECT_EQ(zeb({"info", "a.zeb"}).exitCode, 0);
}

/// Interrupts `zeb verify` after its first movie, during a long second one.
TEST_F(ClipTest, InterruptStopsVerifyWithinMovie) {
    makeLongClip(m_folder.file("long.mkv"), "640x480", 30, 20);
    ASSERT_EQ(zeb({"encode", "a.mov", "long.mkv", "--progress", "none"}).exitCode, 0);
    ChildProcess verify(zebCommand({"verify", "a.zeb", "long.zeb"}), m_options);
    EXPECT_THAT(verify.readLine().value_or(""), StartsWith("a.zeb: valid"));
    verify.sendSignal(SIGINT);
    const auto result = verify.finish();
    EXPECT_EQ(result.exitCode, 130);
    EXPECT_EQ(result.error, "zeb: long.zeb: interrupted\n");
    EXPECT_EQ(result.out, "");
}

using ThumbnailProgram = ClipTest;

TEST_F(ThumbnailProgram, WritesFirstPictureOrNothing) {
    ASSERT_EQ(zeb({"encode", "a.mov"}).exitCode, 0);
    store(m_folder.file("cut.zeb"), contents(m_folder.file("a.zeb")).substr(0, 60));
    store(m_folder.file("text.zeb"), "no movie");
    store(m_folder.file("a.png"), "old");
    for (const std::string wrong : {"cut.zeb", "text.zeb", "missing.zeb", "."})
        expectFailure({"thumbnail", wrong, "a.png"}, 3, wrong);
    expectFailure({"thumbnail", "a.zeb", "nowhere/picture/a.png"}, 4, "");
    expectFailure({"thumbnail", "a.zeb", "a.png", "--size", "0"}, 2, "");
    expectFailure({"thumbnail", "a.zeb", "./a.zeb"}, 4, "is the input itself");
    const auto frames = test::golden::movie();  // its frames are no pictures
    store(m_folder.file("frames.zeb"), std::string(frames.begin(), frames.end()));
    const auto result = zeb({"thumbnail", "frames.zeb", "a.png"});
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.error, HasSubstr("No picture at the beginning"));
    EXPECT_EQ(contents(m_folder.file("a.png")), "old");

    EXPECT_EQ(zeb({"thumbnail", "a.zeb", "a.png", "--size", "48"}).exitCode, 0);
    // PNG header with 48 x 36 pixels.
    EXPECT_EQ(contents(m_folder.file("a.png")).substr(12, 12), std::string("IHDR\0\0\0\x30\0\0\0\x24", 12));
}

using PlayProgram = ProgramTest;

/// Runs a copy of `zeb` in a folder with a fake `zebmaker` that prints its arguments.
TEST_F(PlayProgram, StartsTheApplicationInItsPlace) {
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
