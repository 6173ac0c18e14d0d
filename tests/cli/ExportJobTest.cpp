#include "cli/ExportJob.h"

#include <gtest/gtest.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>

#include "cli/UsageError.h"
#include "tests/platform/TemporaryFolder.h"

namespace zeb::cli {
namespace {

using Kind = ExportSettings::Kind;

ExportArguments parse(std::vector<std::string> words) {
    ExportArguments arguments;
    CLI::App parser;
    parser.option_defaults()->take_last();
    declareExportArguments(parser, arguments);
    std::reverse(words.begin(), words.end());
    parser.parse(words);
    return arguments;
}

TEST(ExportTime, ReadsWhatPeopleWrite) {
    EXPECT_EQ(timeFrom("0"), 0);
    EXPECT_EQ(timeFrom("2.5"), 2'500'000);
    EXPECT_EQ(timeFrom("1:30"), 90'000'000);
    EXPECT_EQ(timeFrom("1:02:03.000001"), 3'723'000'001);
    for (const char* text :
         {"", ".5", "1.", "1.0000001", "1:60", "1:2:3:4", "-1", "1.-5", "1:", ":1", "1e3", "99999999999"})
        EXPECT_EQ(timeFrom(text), std::nullopt) << text;
}

TEST(ExportJob, ChoosesFormatAndOutput) {
    const test::TemporaryFolder folder;
    const std::string there = folder.path();
    struct Case {
        std::vector<std::string> words;
        Kind kind;
        std::string output;
        FilmFormat format = FilmFormat::mp4;
    };
    for (const Case& test : {
             Case{{"-o", "b.mp4"}, Kind::film, "b.mp4"},
             {{"-o", "b.M4V"}, Kind::film, "b.M4V"},
             {{"-o", "b.mkv"}, Kind::film, "b.mkv", FilmFormat::matroska},
             {{"-o", "b.mkv", "--format", "gif"}, Kind::film, "b.mkv", FilmFormat::gif},
             {{"-o", "b", "--format", "wav"}, Kind::sound, "b"},
             {{"-o", "f%d.png"}, Kind::pictures, "f%d.png"},
             {{"-o", "f%d.png", "--frame", "3"}, Kind::pictures, "f%d.png"},
             {{"-o", "f.png", "--at", "1:00"}, Kind::picture, "f.png"},
             {{"-o", "new/"}, Kind::pictures, "new/frame-%05d.png"},
             {{"-o", there}, Kind::pictures, there + "/frame-%05d.png"},
             {{"-o", there, "--frame", "0"}, Kind::picture, there + "/my film.png"},
             {{"-o", there, "--format", "mp4"}, Kind::film, there + "/my film.mp4"},
         }) {
        std::vector<std::string> words = test.words;
        words.push_back("in/my film.zeb");
        const ExportJob job = planExport(parse(words));
        EXPECT_EQ(job.settings.kind, test.kind) << ::testing::PrintToString(words);
        EXPECT_EQ(job.output, test.output);
        EXPECT_EQ(job.settings.format, test.format) << test.output;
    }
    const ExportSettings settings =
        planExport(parse({"a.zeb", "-o", "b.gif", "--from", "1", "--to", "2.5", "--scale", "3"})).settings;
    EXPECT_EQ(settings.from, 1'000'000);
    EXPECT_EQ(settings.to, 2'500'000);
    EXPECT_EQ(settings.scale, 3);
}

TEST(ExportJob, RefusesNonsense) {
    const std::vector<std::string> unreadable[] = {
        {"a.zeb"},
        {"a.zeb", "-o", ""},
        {"a.zeb", "-o", "b.png", "--frame", "-1"},
        {"a.zeb", "-o", "b.png", "--frame", "1", "--at", "1"},
        {"a.zeb", "-o", "b.png", "--frame", "1", "--to", "1"},
        {"a.zeb", "-o", "b.mp4", "--scale", "0"},
    };
    for (const auto& words : unreadable) {
        EXPECT_THROW(parse(words), CLI::ParseError) << ::testing::PrintToString(words);
    }
    const std::vector<std::string> senseless[] = {
        {"a.zeb", "-o", "b"},
        {"a.zeb", "-o", "b.avi"},
        {"a.zeb", "-o", "b.png"},
        {"a.zeb", "-o", "%d-%d.png"},
        {"a.zeb", "-o", "b.mp4", "--frame", "1"},
        {"a.zeb", "-o", "b.gif", "--at", "1"},
        {"a.zeb", "-o", "b.mp4", "--from", "2", "--to", "2"},
        {"a.zeb", "-o", "b.wav", "--scale", "2"},
    };
    for (const auto& words : senseless) {
        EXPECT_THROW(planExport(parse(words)), UsageError) << ::testing::PrintToString(words);
    }
}

}  // namespace
}  // namespace zeb::cli
