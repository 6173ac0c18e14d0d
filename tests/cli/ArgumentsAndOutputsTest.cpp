#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <filesystem>
#include <optional>

#include "cli/Failure.h"
#include "cli/Interruption.h"
#include "cli/Program.h"
#include "cli/commands/Commands.h"
#include "cli/encode/EncodeJob.h"
#include "cli/encode/PartialOutput.h"
#include "cli/export/ExportJob.h"
#include "tests/format/GoldenMovie.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::cli {
namespace {

namespace golden = test::golden;
using ::testing::PrintToString;
using Kind = ExportSettings::Kind;
using Words = std::vector<std::string>;

template <typename Arguments>
Arguments parse(const Command& command, const Words& words) {
    Arguments arguments;
    readArguments(command, words, &arguments);
    return arguments;
}
EncodeArguments parseEncode(const Words& words) {
    return parse<EncodeArguments>(encodeCommand, words);
}
ExportArguments parseExport(const Words& words) {
    return parse<ExportArguments>(exportCommand, words);
}

std::vector<EncodeJob> plan(Words inputs, std::optional<std::string> output = {}) {
    EncodeArguments arguments;
    arguments.inputs = std::move(inputs);
    arguments.output = std::move(output);
    return planJobs(arguments);
}

TEST(EncodeArguments, SetEveryFieldOfSettings) {
    const struct {
        Words words;
        void (*expect)(Settings&);
    } cases[] = {
        {{}, [](Settings& s) { s.fpsFromSource = true; }},  // default of the window
        {{"--title", "--loop"}, [](Settings& s) { s.title = "--loop"; }},
        {{"--size", "512x256"}, [](Settings& s) { s.width = 512, s.height = 256; }},
        {{"--size=65535X1"}, [](Settings& s) { s.width = 65535, s.height = 1; }},
        {{"--preset", "dvd"}, [](Settings& s) { s.width = 720, s.height = 576; }},
        {{"--preset", "hd"}, [](Settings& s) { s.width = 1280, s.height = 720; }},
        {{"--preset", "fullhd"}, [](Settings& s) { s.width = 1920, s.height = 1080; }},
        {{"--audio", "mono", "--fps", "65535"},
         [](Settings& s) { s.audioChannels = 1, s.fps = 65535, s.fpsFromSource = false; }},
        {{"--track", "1000000", "--threads", "256"}, [](Settings& s) { s.audioTrackIndex = 999'999; }},
        {{"--stretch"}, [](Settings& s) { s.preserveAspect = false; }},
        {{"--fps", "10", "--fps", "12"}, [](Settings& s) { s.fps = 12, s.fpsFromSource = false; }},
        {{"--mode", "4", "--dither"}, [](Settings& s) { s.qlModeNumber = 4, s.dither = true; }},
        {{"--audio", "off"}, [](Settings& s) { s.includeAudio = false, s.audioChannels = 0; }},
        {{"--track", "3"}, [](Settings& s) { s.audioTrackIndex = 2; }},
        {{"--loop"}, [](Settings& s) { s.loop = true; }},
        {{"--dithering", "diffusion", "--flip", "--auto-levels"},
         [](Settings& s) {
             s.colours.dithering = Colours::Dithering::diffusion;
             s.dither = s.shape.flip = s.look.autoLevels = true;
         }},
    };
    for (auto [words, expect] : cases) {
        Settings expected;
        expected.title = "Summer holiday";
        expected.width = 1920;
        expected.height = 1080;
        expected.fps = 25;
        expect(expected);
        words.push_back("a.mp4");
        EXPECT_EQ(settingsFor(parseEncode(words), "in/Summer holiday.mp4", {1920, 1080, 25}), expected)
            << PrintToString(words);
    }
}

TEST(EncodeJobs, DeriveOutputNamesFromInputs) {
    const test::TemporaryFolder temporary;
    const std::string folder = temporary.path();
    EXPECT_EQ(plan({"a.b.mp4"})[0].output, "a.b.zeb");
    EXPECT_EQ(plan({"in.x/a"})[0].output, "in.x/a.zeb");
    EXPECT_EQ(plan({"in/a.mp4"}, folder)[0].output, folder + "/a.zeb");
    EXPECT_EQ(plan({"in/a.mp4"}, folder + "/")[0].output, folder + "/a.zeb");
    EXPECT_EQ(plan({"in/a.mp4"}, "missing/")[0].output, "missing/a.zeb");
}

TEST(EncodeJobs, RejectOutputsThatCollide) {
    const test::TemporaryFolder temporary;
    const std::string folder = temporary.path();
    std::filesystem::create_directory_symlink(folder, folder + "/link");
    test::store(folder + "/old.zeb", "a movie");

    EXPECT_THROW(plan({"a.mp4", "b.mp4"}, folder + "/one.zeb"), UsageError);
    EXPECT_THROW(plan({"a.mp4", "./a.mov"}), UsageError);
    EXPECT_THROW(plan({folder + "/a.mp4", folder + "/link/a.mov"}), UsageError);
    EXPECT_THROW(plan({"x/a.mp4", "y/a.mp4"}, folder), UsageError);
    // The movie of one input would replace another input.
    EXPECT_THROW(plan({folder + "/old.mp4", folder + "/old.zeb"}, folder), UsageError);

    EXPECT_EQ(plan({"x/a.mp4", "y/a.mp4"}).size(), 2u);
    EXPECT_EQ(plan({"a.mp4", "b.mp4"}, folder).size(), 2u);
    // An output that is its own input is rejected when this input is converted.
    EXPECT_EQ(plan({folder + "/old.zeb"}).size(), 1u);
}

TEST(PartialOutput, FinishesOnlyFileOfItsRun) {
    const golden::Bytes unfinished = golden::unfinishedMovie();
    const golden::Bytes header(unfinished.begin(), unfinished.begin() + 44);
    const struct {
        bool hasOld;
        std::optional<golden::Bytes> written;  ///< empty: the run created no file
        bool isReplaced;                       ///< by a file of another process
        std::int64_t keptSeconds;
        bool oldIsBack;
        std::string text;
    } cases[] = {
        {false, {}, false, 0, false, ""},
        {true, {}, false, 0, true, ""},
        {false, header, false, 0, false, "contained no complete second and was removed"},
        {true, header, false, 0, true, "complete second and was removed; the previous movie was restored"},
        {true, golden::Bytes(), false, 0, true, "was restored"},
        {false, unfinished, false, 2, false, "finished after 2 seconds"},
        {true, unfinished, false, 2, false, "a.previous.zeb"},
        {false, unfinished, true, 0, false, "was not changed"},
        {true, unfinished, true, 0, false, "was not changed; the previous movie is now "},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const test::TemporaryFolder folder;
        const std::string path = folder.file("a.zeb");
        const std::string previous = folder.file("a.previous.zeb");
        if (c.hasOld) test::store(path, "old");
        OutputPlace output(path, {OutputTerms::Existing::replace, {}});
        output.setAside();
        if (c.written) {
            output.create()->close();
            test::store(path, *c.written);
        }
        if (c.isReplaced) {
            std::filesystem::remove(path);
            test::store(path, unfinished);
        }
        const PartialOutcome outcome = settlePartialMovie(output);
        EXPECT_EQ(outcome.keptSeconds, c.keptSeconds);
        EXPECT_NE(outcome.text.find(c.text), std::string::npos) << outcome.text;
        EXPECT_EQ(outcome.text.empty(), c.text.empty());
        if (c.isReplaced) {
            EXPECT_EQ(test::contents<golden::Bytes>(path), unfinished);
        } else if (c.keptSeconds == 0) {
            EXPECT_EQ(test::contents(path), c.oldIsBack ? "old" : "");
            EXPECT_EQ(std::filesystem::exists(path), c.oldIsBack);
        }
        EXPECT_EQ(test::contents(previous), c.hasOld && !c.oldIsBack ? "old" : "");
    }
}

TEST(ExportJob, ChoosesFormatAndOutput) {
    const test::TemporaryFolder folder;
    const std::string there = folder.path();
    const struct {
        Words words;
        Kind kind;
        std::string output;
        FilmFormat format = FilmFormat::mp4;
    } cases[] = {
        {{"-o", "b.M4V"}, Kind::film, "b.M4V"},
        {{"-o", "b.mkv"}, Kind::film, "b.mkv", FilmFormat::matroska},
        {{"-o", "b.mkv", "--format", "gif"}, Kind::film, "b.mkv", FilmFormat::gif},
        {{"-o", "b", "--format", "wav"}, Kind::sound, "b"},
        {{"-o", "f%d.png", "--frame", "3"}, Kind::pictures, "f%d.png"},
        {{"-o", "f.png", "--at", "1:00"}, Kind::picture, "f.png"},
        {{"-o", "new/"}, Kind::pictures, "new/frame-%05d.png"},
        {{"-o", there}, Kind::pictures, there + "/frame-%05d.png"},
        {{"-o", there, "--frame", "0"}, Kind::picture, there + "/my film.png"},
        {{"-o", there, "--format", "mp4"}, Kind::film, there + "/my film.mp4"},
    };
    for (auto [words, kind, output, format] : cases) {
        words.push_back("in/my film.zeb");
        const ExportJob job = planExport(parseExport(words));
        EXPECT_EQ(job.settings.kind, kind) << PrintToString(words);
        EXPECT_EQ(job.output, output);
        EXPECT_EQ(job.settings.format, format) << output;
    }
    // "%" in a movie's name is not a placeholder.
    const ExportJob named =
        planExport(parseExport({"a:b%5d.zeb", "-o", "./", "--format", "png", "--frame", "0"}));
    EXPECT_EQ(named.settings.kind, Kind::picture);
    EXPECT_EQ(named.output, "./a:b%5d.png");
    const Words words = {"a.zeb", "-o", "b.gif", "--from", "1", "--to", "2.5", "--scale", "3"};
    const ExportSettings settings = planExport(parseExport(words)).settings;
    EXPECT_EQ(settings.from, 1'000'000);
    EXPECT_EQ(settings.to, 2'500'000);
    EXPECT_EQ(settings.scale, 3);
    const ExportSettings single =
        planExport(parseExport({"a.zeb", "-o", "b.png", "--at", "1:00.5", "--interpretation", "QPCpackedBE"}))
            .settings;
    EXPECT_EQ(single.at, 60'500'000);
    EXPECT_EQ(single.frame, std::nullopt);
    EXPECT_EQ(single.interpretation, Mode32Interpretation::qpcPackedBE);
    EXPECT_EQ(single.terms.existing, OutputTerms::Existing::keep);
    const ExportSettings last =
        planExport(parseExport({"a.zeb", "-o", "b.png", "--frame", "2147483647", "--scale", "64", "--force"}))
            .settings;
    EXPECT_EQ(last.frame, 2147483647);
    EXPECT_EQ(last.scale, 64);
    EXPECT_EQ(last.terms.existing, OutputTerms::Existing::replace);
}

TEST(Interruption, LeavesIgnoredSignalsIgnored) {
    const auto answer = [](int ignored, int raised) {
        signal(ignored, SIG_IGN);
        stopOnSignals();
        raise(raised);
        _exit(isInterrupted() ? 1 : 0);
    };
    for (const int ignored : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(answer(ignored, ignored), ::testing::ExitedWithCode(0), "") << ignored;
        for (const int other : {SIGINT, SIGTERM, SIGHUP}) {
            if (other == ignored) continue;
            EXPECT_EXIT(answer(ignored, other), ::testing::ExitedWithCode(1), "") << ignored << other;
        }
    }
}

TEST(Arguments, RejectInvalidValues) {
    for (const Words& words : {Words{},
                               {"-b.mp4"},
                               {"a.mp4", "--size", "512x"},
                               {"a.mp4", "--size", "99999999999x8"},
                               {"a.mp4", "--size", "8x8", "--preset", "hd"},
                               {"a.mp4", "--size", "0x8"},
                               {"a.mp4", "--size", "8x0"},
                               {"a.mp4", "--size", "65536x8"},
                               {"a.mp4", "--fps", "23.976"},
                               {"a.mp4", "--fps", "0"},
                               {"a.mp4", "--fps", "65536"},
                               {"a.mp4", "--threads", "-1"},
                               {"a.mp4", "--threads", "257"},
                               {"a.mp4", "--track", "1000001"},
                               {"a.mp4", "--track", "0"}})
        EXPECT_THROW(parseEncode(words), UsageError) << PrintToString(words);
    for (const Words& words : {Words{"a.zeb"},
                               {"a.zeb", "-o", "b.png", "--frame", "1", "--at", "1"},
                               {"a.zeb", "-o", "b.png", "--frame", "1", "--to", "1"},
                               {"a.zeb", "-o", "b.mp4", "--interpretation", "rgb565"},
                               {"a.zeb", "-o", "b.png", "--frame", "2147483648"},
                               {"a.zeb", "-o", "b.mp4", "--scale", "65"},
                               {"a.zeb", "-o", "b.mp4", "--scale", "0"}})
        EXPECT_THROW(parseExport(words), UsageError) << PrintToString(words);
    for (const Words& words : {Words{"a.zeb", "-o", "b"},
                               {"a.zeb", "-o", "b.avi"},
                               {"a.zeb", "-o", "b.avi", "--frame", "1"},
                               {"a.zeb", "-o", "b.png"},
                               {"a.zeb", "-o", "%d-%d.png"},
                               {"a.zeb", "-o", "b.mp4", "--frame", "1"},
                               {"a.zeb", "-o", "b.gif", "--at", "1"},
                               {"a.zeb", "-o", "b.mp4", "--from", "2", "--to", "2"},
                               {"a.zeb", "-o", "b.wav", "--scale", "2"}})
        EXPECT_THROW(planExport(parseExport(words)), UsageError) << PrintToString(words);
}

}  // namespace
}  // namespace zeb::cli
