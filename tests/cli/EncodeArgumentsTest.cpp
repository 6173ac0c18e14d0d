#include "cli/EncodeArguments.h"

#include <gtest/gtest.h>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>
#include <algorithm>

namespace zeb::cli {
namespace {

EncodeArguments parse(std::vector<std::string> words) {
    EncodeArguments arguments;
    CLI::App parser;
    parser.option_defaults()->take_last();
    declareEncodeArguments(parser, arguments);
    std::reverse(words.begin(), words.end());
    parser.parse(words);
    return arguments;
}

const SourceInfo fullHD{1920, 1080, 25};

TEST(EncodeArguments, ReachTheSettings) {
    struct Case {
        std::vector<std::string> words;
        void (*expect)(Settings&);
    };
    const Case cases[] = {
        {{"--title", "--loop"}, [](Settings& s) { s.title = "--loop"; }},
        {{"--size", "512x256"}, [](Settings& s) { s.width = 512, s.height = 256; }},
        {{"--size=65535X1"}, [](Settings& s) { s.width = 65535, s.height = 1; }},
        {{"--preset", "fullhd"}, [](Settings& s) { s.width = 1920, s.height = 1080; }},
        {{}, [](Settings& s) { s.fpsFromSource = true; }},  // what the window proposes
        {{"--stretch"}, [](Settings& s) { s.preserveAspect = false; }},
        {{"--fps", "10"}, [](Settings& s) { s.fps = 10, s.fpsFromSource = false; }},
        {{"--fps", "10", "--fps", "12"}, [](Settings& s) { s.fps = 12, s.fpsFromSource = false; }},
        {{"--mode", "4", "--dither"}, [](Settings& s) { s.qlModeNumber = 4, s.dither = true; }},
        {{"--audio", "off"}, [](Settings& s) { s.includeAudio = false, s.audioChannels = 0; }},
        {{"--track", "3"}, [](Settings& s) { s.audioTrackIndex = 2; }},
        {{"--loop"}, [](Settings& s) { s.loop = true; }},
    };
    for (Case testCase : cases) {
        Settings expected;
        expected.title = "Summer holiday";
        expected.width = 1920;
        expected.height = 1080;
        expected.fps = 25;
        testCase.expect(expected);
        testCase.words.push_back("a.mp4");
        EXPECT_EQ(settingsFor(parse(testCase.words), "in/Summer holiday.mp4", fullHD), expected)
            << testCase.words[0];
    }
}

TEST(EncodeArguments, RefuseNonsense) {
    const std::vector<std::string> cases[] = {
        {},
        {"-b.mp4"},
        {"a.mp4", "--size", "512x"},
        {"a.mp4", "--size", "99999999999x8"},
        {"a.mp4", "--size", "8x8", "--preset", "hd"},
        {"a.mp4", "--fps", "23.976"},
        {"a.mp4", "--track", "0"},
        {"a.mp4", "--threads", "1000"},
        {"a.mp4", "--output", ""},
        {"a.mp4", "--loop=maybe"},
    };
    for (const auto& words : cases) {
        EXPECT_THROW(parse(words), CLI::ParseError) << ::testing::PrintToString(words);
    }
}

}  // namespace
}  // namespace zeb::cli
