#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "format/ZEBReader.h"
#include "tests/cli/ZebProgram.h"

namespace zeb::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;
using ::testing::StartsWith;

class EncodeProgram : public ClipTest {
protected:
    std::string m_movie = m_folder.file("a.zeb");
};

TEST_F(EncodeProgram, DerivesAllSettingsFromSource) {
    const auto result = zeb({"encode", "a.mov"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.out, StartsWith("a.mov -> a.zeb: 160x120, 10 frames per second, 0:03, Mode 32\n"));
    EXPECT_THAT(result.out, HasSubstr("\na.zeb: 160x120, 30 frames, 0:03, "));
    EXPECT_EQ(rightMovie(m_movie).header.frameCount, 30);
    // The tone lasts 2.5 of the 3 seconds.
    const auto sound = ZEBReader(m_movie).readAllAudio().bytes;
    ASSERT_EQ(sound.size(), 3 * 2 * 20000U);
    const auto silence = sound.begin() + 2 * 2 * 20000 + 20000;
    EXPECT_GT(std::count_if(sound.begin(), silence, [](int byte) { return byte != 128; }), 80000);
    EXPECT_LT(std::count_if(silence, sound.end(), [](int byte) { return byte != 128; }), 10);
}

TEST_F(EncodeProgram, FollowsOptionsAndReportsProgressAsJSON) {
    const auto result =
        zeb({"encode",  "--size", "80x80",     "--stretch",  "--fps", "4",         "--mode", "4",
             "--audio", "mono",   "--loop",    "--title",    "QL",    "--threads", "2",      "--track",
             "7",       "-o",     "other.zeb", "--progress", "json",  "a.mov"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.error, "zeb: a.mov: there is no sound track 7; using the last one, track 1\n");
    const ZEBHeader header = rightMovie(m_folder.file("other.zeb")).header;
    EXPECT_EQ(header.width, 80);
    EXPECT_EQ(header.height, 80);
    EXPECT_EQ(header.fps, 4);
    EXPECT_EQ(header.mode, 4);
    EXPECT_EQ(header.audioChannels, 1);
    EXPECT_EQ(header.options, 1);
    EXPECT_EQ(header.title, "QL");
    std::istringstream stream(result.out);
    std::int64_t frames = 0;
    int complete = 0;
    nlohmann::json json;
    for (std::string line; std::getline(stream, line);) {
        json = nlohmann::json::parse(line);
        if (json["type"] != "progress") continue;
        EXPECT_GE(json["frames"], frames);
        frames = json["frames"];
        complete += json["fraction"] == 1;
    }
    EXPECT_EQ(frames, 12);
    EXPECT_EQ(complete, 1) << "one line says that all is done";
    EXPECT_EQ(json["type"], "done");
    EXPECT_EQ(json["bytes"], fs::file_size(m_folder.file("other.zeb")));
}

TEST_F(EncodeProgram, EstimateMatchesWrittenSize) {
    for (const std::string mode : {"4", "32"}) {
        const auto result =
            zeb({"encode", "--estimate", "missing.mp4", "a.mov", "--mode", mode, "--progress", "json"});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_THAT(result.error, StartsWith("zeb: missing.mp4: "));
        const auto json = nlohmann::json::parse(result.out.substr(result.out.find("{\"", 1)));
        EXPECT_EQ(json["type"], "forecast");
        EXPECT_EQ(json["fits"], true);
        EXPECT_EQ(json["frames"], 30);
        EXPECT_EQ(json["exact"], mode == "4");
        ASSERT_EQ(zeb({"encode", "a.mov", "--mode", mode, "--progress", "none"}).exitCode, 0);
        const auto bytes = static_cast<double>(fs::file_size(m_movie));
        EXPECT_NEAR(json["bytes"].get<double>() / bytes, 1, mode == "4" ? 0 : 0.05);
        fs::remove(m_movie);
    }
}

TEST_F(EncodeProgram, EstimateReportsMovieBeyondFormat) {
    makeClip(m_folder.file("second.mkv"),
             {"-f", "lavfi", "-i", "color=s=1920x1080:r=60:d=1", "-c:v", "mpeg4"});
    makeClip(m_folder.file("long.mkv"),
             {"-stream_loop", "149", "-i", m_folder.file("second.mkv"), "-c", "copy"});
    const std::vector<std::string> words = {"encode", "long.mkv",  "--mode",     "4",
                                            "--size", "1920x1080", "--progress", "json"};
    std::vector<std::string> estimate = words;
    estimate.push_back("--estimate");
    const auto result = zeb(estimate);
    EXPECT_EQ(result.exitCode, 1) << result.error;
    EXPECT_THAT(result.out, HasSubstr("\"fits\":false"));
    // A run warns of it, after a look at few pictures.
    ChildProcess run(zebCommand({"encode", "long.mkv", "--size", "1920x1080", "--progress", "json"}),
                     m_options);
    nlohmann::json json;
    for (auto line = run.readLine(); line && json["type"] != "forecast"; line = run.readLine())
        json = nlohmann::json::parse(*line);
    EXPECT_EQ(json["samples"], 8);
}

TEST_F(EncodeProgram, ReplacesOnlyWithForceNeverItsInput) {
    store(m_movie, "precious");
    expectFailure({"encode", "a.mov"}, 4, "a.zeb: exists already (use --force to replace it)\n");
    EXPECT_EQ(contents(m_movie), "precious");
    EXPECT_EQ(zeb({"encode", "a.mov", "--force", "--progress", "none"}).exitCode, 0);
    EXPECT_EQ(rightMovie(m_movie).header.frameCount, 30);

    const std::string before = contents(m_folder.file("a.mov"));
    fs::create_symlink("a.mov", m_folder.file("soft.zeb"));
    for (const std::string output : {"a.mov", "soft.zeb"}) {
        expectFailure({"encode", "a.mov", "-o", output, "--force"}, 4, output + ": is the input itself\n");
        EXPECT_EQ(contents(m_folder.file("a.mov")), before);
    }
}

TEST_F(EncodeProgram, TakesOddNamesLiterallyDespiteFailures) {
    const std::vector<std::string> names = {"[a,b]", "a:b.mov",  "img%03d.mov", "http:x.mov",
                                            "*.mov", "-odd.mov", "--fps",       "[c,d]"};
    std::vector<std::string> words = {"encode", "--progress", "none", "--fps", "1", "--", "missing.mp4"};
    for (const std::string& name : names) {
        fs::copy(m_folder.file("a.mov"), m_folder.file(name));
        words.push_back(name);
    }
    const auto result = zeb(words);
    EXPECT_EQ(result.exitCode, 3);
    EXPECT_THAT(result.error, StartsWith("zeb: missing.mp4: "));
    EXPECT_EQ(std::ranges::count(result.error, '\n'), 1) << result.error;
    for (const std::string& name : names)
        EXPECT_EQ(rightMovie(fs::path(m_folder.file(name)).replace_extension(".zeb")).seconds, 3) << name;
}

TEST_F(EncodeProgram, FinishesWhenOutputPipeIsClosed) {
    m_options.ignoresOutput = true;
    EXPECT_EQ(zeb({"encode", "a.mov", "--progress", "json"}).exitCode, 0);
    EXPECT_EQ(rightMovie(m_movie).seconds, 3);
}

TEST_F(EncodeProgram, KeepsOldMovieUntilNewIsComplete) {
    makeLongClip(m_folder.file("long.mkv"), "1280x720", 30, 60);
    store(m_folder.file("text.mp4"), "This is no video.\n");
    store(m_movie, "precious");
    expectFailure({"encode", "text.mp4", "-o", "a.zeb", "--force"}, 3, "text.mp4");
    expectFailure({"encode", "text.mp4", "-o", "new/"}, 3, "text.mp4");
    EXPECT_EQ(contents(m_movie), "precious");

    ChildProcess killed(zebCommand({"encode", "--progress", "json", "long.mkv", "-o", "a.zeb", "--force"}),
                        m_options);
    awaitFrames(killed, 30);
    killed.sendSignal(SIGKILL);
    EXPECT_EQ(killed.finish().exitCode, -SIGKILL);
    EXPECT_EQ(contents(m_folder.file("a.previous.zeb")), "precious");
    EXPECT_EQ(zeb({"repair", "a.zeb", "--force"}).exitCode, 0);
}

TEST_F(EncodeProgram, BadInputPrintsOneLineLeavesNothing) {
    makeClip(m_folder.file("sound.wav"), {"-f", "lavfi", "-i", "sine=duration=1"});
    store(m_folder.file("text.mp4"), "This is no video.\n");
    store(m_folder.file("empty.mp4"), "");
    store(m_folder.file("list.m3u8"), "#EXTM3U\n#EXTINF:1,\na.mov\n");
    fs::create_directory(m_folder.file("folder"));
    fs::create_directory(m_folder.file("folder.zeb"));
    ASSERT_EQ(mkfifo(m_folder.file("pipe.mp4").c_str(), 0600), 0);
    for (const std::string input :
         {"missing.mp4", "folder", "text.mp4", "empty.mp4", "sound.wav", "pipe.mp4", "list.m3u8",
          "http://127.0.0.1/a.mp4", "img%03d.png", "/dev/zero", "[a", "a]"})
        expectFailure({"encode", input, "-o", "new.zeb"}, 3, "zeb: " + input + ": ");
    expectFailure({"encode", "missing.mp4", "-o", "missing/new.zeb"}, 3, "zeb: missing.mp4: ");
    expectFailure({"encode", "a.mov", "-o", "missing/new.zeb"}, 4, "zeb: missing/new.zeb: ");
    expectFailure({"encode", "a.mov", "-o", "missing/too/"}, 4, "zeb: missing/too/a.zeb: ");
    expectFailure({"encode", "a.mov", "-o", "text.mp4/new.zeb"}, 4, "zeb: text.mp4/new.zeb: ");
    expectFailure({"encode", "a.mov", "-o", "pipe.mp4", "--force"}, 4, "zeb: pipe.mp4: ");
    expectFailure({"encode", "folder", "--force"}, 4, "zeb: folder.zeb: ");
    expectFailure({"encode", "a.mov", "-o", "missing/new.zeb", "--estimate"}, 4, "zeb: missing/new.zeb: ");
    for (const std::vector<std::string>& words :
         {std::vector<std::string>{}, {"info"}, {"encode", ""}, {"encode", "a.mov", "--mode", "\x1b[2J\n"}})
        expectFailure(words, 2, "");
}

TEST_F(EncodeProgram, WarnsOfIncompleteVideo) {
    makeClip(m_folder.file("whole.mp4"),
             {"-f", "lavfi", "-i", "testsrc=s=160x120:r=10:d=20", "-c:v", "mpeg4", "-movflags", "faststart"});
    const std::string bytes = contents(m_folder.file("whole.mp4"));
    store(m_folder.file("cut.mp4"), bytes.substr(0, bytes.size() / 3));
    for (const std::string option : {"--estimate", "--force"}) {
        const auto result = zeb({"encode", "cut.mp4", "--progress", "none", option});
        EXPECT_THAT(result.error, StartsWith("zeb: cut.mp4: The film breaks off at 0:0"));
        EXPECT_EQ(std::ranges::count(result.error, '\n'), 1) << result.error;
    }
}

TEST_F(EncodeProgram, InterruptMakesShorterMovie) {
    // One minute, so that the conversion still runs when the signal arrives.
    makeLongClip(m_folder.file("long.mkv"), "1280x720", 60, 60);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        ChildProcess zeb(zebCommand({"encode", "--progress", "json", "long.mkv", "a.mov"}), m_options);
        awaitFrames(zeb, 60);
        const auto start = std::chrono::steady_clock::now();
        zeb.sendSignal(signal);
        const auto result = zeb.finish();
        // Stopping takes 0.1 s. The rest of the limit is for disk access and busy machines.
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2));
        EXPECT_EQ(result.exitCode, 130);
        EXPECT_THAT(result.error, HasSubstr("zeb: long.mkv: interrupted; long.zeb was finished after "));
        EXPECT_THAT(result.error, HasSubstr("zeb: a.mov: not started because of the interrupt\n"));
        std::istringstream lines(result.out.substr(result.out.find("{\"type\":\"error\"")));
        for (const std::string input : {"long.mkv", "a.mov"}) {
            std::string line;
            std::getline(lines, line);
            const auto end = nlohmann::json::parse(line);
            EXPECT_EQ(end["input"], input);
            EXPECT_EQ(end["exitCode"], 130);
            EXPECT_EQ(end["keptSeconds"],
                      input == "a.mov" ? 0 : rightMovie(m_folder.file("long.zeb")).seconds);
        }
        // The interrupt ends all inputs: the next one is not opened.
        EXPECT_FALSE(fs::exists(m_movie));
        fs::remove(m_folder.file("long.zeb"));
    }
}

}  // namespace
}  // namespace zeb::test
