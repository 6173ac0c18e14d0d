#include "cli/progress/ProgressReporter.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

#include "cli/progress/BarProgress.h"
#include "cli/progress/SpeedMeter.h"

namespace zeb::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

class Reporting {
public:
    Reporting(ProgressStyle style, bool isTerminal, bool showsColour = false)
        : m_terminal{isTerminal, showsColour, [] { return 60; }},
          m_console(out, error, m_terminal, m_terminal),
          m_reporter(makeProgressReporter(style, m_console, Verbosity::quiet)) {
        m_reporter->began({"in/a\xff.mp4", "out/\u00e4.zeb"});
        Settings settings;
        settings.title = "\x1b]0;\"T\u00eftle\"";
        m_reporter->planned(settings, {{1920, 1080, 25}, {448, 256}, 25, 9.6, 10, 250});
        m_reporter->logged("analysing");
        m_reporter->advanced({1, 250, 25, 100, 0, std::nullopt});
        m_reporter->warned("careful\n");
        m_reporter->advanced({100, 250, 25, 5000, 50, 3});
        m_reporter->advanced({250, 250, 25, 6000, 50, 0});
        m_reporter->finished({{448, 256}, 250, 10, 1'500'000, 2.5});
        if (!isTerminal) return;
        m_reporter->began({"b.mp4", "b.zeb"});
        m_reporter->logged("again");
        m_reporter->failed({"broken", ExitCode::conversionFailed, 0});
    }

    std::ostringstream out, error;

private:
    Terminal m_terminal;
    Console m_console;
    std::unique_ptr<ProgressReporter> m_reporter;
};

TEST(JsonProgress, WritesOneObjectPerLine) {
    Reporting reporting(ProgressStyle::json, false);
    std::vector<nlohmann::json> lines;
    std::istringstream stream(reporting.out.str());
    for (std::string line; std::getline(stream, line);)
        lines.push_back(nlohmann::json::parse(line));
    ASSERT_EQ(lines.size(), 6u);  // the second "progress" was too soon after the first, and not the last
    const char* types[] = {"start", "log", "progress", "warning", "progress", "done"};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i]["type"], types[i]);
        EXPECT_EQ(lines[i]["input"], "in/a\ufffd.mp4");
    }
    EXPECT_EQ(lines[0]["title"], "\x1b]0;\"T\u00eftle\"");
    EXPECT_TRUE(lines[2]["remainingSeconds"].is_null());
    for (const char c : reporting.out.str())
        EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7f));
}

TEST(BarProgress, KeepsOneLineBelowMessages) {
    Reporting reporting(ProgressStyle::automatic, true);
    EXPECT_THAT(reporting.out.str(), Not(HasSubstr("\x1b")));
    // Order: log line before the first frame, bar, bar erased for the warning, bar again, summary.
    EXPECT_THAT(reporting.out.str(), HasSubstr("\ranalysing"));
    EXPECT_THAT(reporting.out.str(),
                HasSubstr("\r[....................]    0 %  -- fps  -:-- left  100 bytes\r"));
    EXPECT_THAT(reporting.out.str(), HasSubstr("  100 %  50.0 fps  0:00 left"));
    EXPECT_THAT(reporting.out.str(), HasSubstr(" \rout/\u00e4.zeb: 448x256, 250 frames, 0:10, 1.5 MB\n"));
    EXPECT_EQ(reporting.error.str(), "zeb: in/a\\xff.mp4: careful\\x0a\nzeb: b.mp4: broken\n");
    EXPECT_THAT(reporting.out.str(), ::testing::EndsWith("\ragain\r     \r")) << "the next run starts anew";
    EXPECT_EQ(std::ranges::count(reporting.out.str(), '\n'), 1);
}

TEST(BarProgress, ColoursBarAndComplaints) {
    Reporting reporting(ProgressStyle::automatic, true, true);
    EXPECT_THAT(reporting.out.str(), HasSubstr("\r\x1b[32m[#####################\x1b[0m]  100 %"));
    EXPECT_THAT(reporting.error.str(), HasSubstr("\x1b[33mzeb: in/a\\xff.mp4: careful\\x0a\x1b[0m\n"));
    EXPECT_THAT(reporting.error.str(), HasSubstr("\x1b[31mzeb: b.mp4: broken\x1b[0m\n"));
}

TEST(Console, UsesTerminalUnlessToldOtherwise) {
    const int terminal = posix_openpt(O_RDWR | O_NOCTTY), file = open("/dev/null", O_WRONLY);
    const winsize size{.ws_row = 25, .ws_col = 77, .ws_xpixel = 0, .ws_ypixel = 0};
    ASSERT_EQ(ioctl(terminal, TIOCSWINSZ, &size), 0);
    for (const auto& [type, noColour, isTerminal, showsColour] :
         {std::tuple{"xterm", "", true, true}, {"xterm", "1", true, false}, {"dumb", "", false, false}}) {
        setenv("TERM", type, 1);
        setenv("NO_COLOR", noColour, 1);
        EXPECT_EQ(terminalOf(terminal).isTerminal, isTerminal);
        EXPECT_EQ(terminalOf(terminal).showsColour, showsColour);
        EXPECT_FALSE(terminalOf(file).isTerminal);
    }
    EXPECT_EQ(terminalOf(terminal).columns(), 77);
    EXPECT_EQ(terminalOf(file).columns(), 0);
    close(terminal);
    close(file);
    std::ostringstream out, error;
    Console(out, error, {}, {}).log("analysing\n");
    EXPECT_EQ(error.str(), "analysing\\x0a\n");
}

TEST(PlainProgress, WritesOneLinePerReport) {
    Reporting reporting(ProgressStyle::automatic, false);
    EXPECT_EQ(reporting.out.str(),
              "in/a\\xff.mp4 -> out/\u00e4.zeb: 448x256, 25 frames per second, 0:10, Mode 32\n"
              " 40 %  100 of 250 frames  50.0 fps  0:03 left  5.0 kB\n"
              "out/\u00e4.zeb: 448x256, 250 frames, 0:10, 1.5 MB\n");
    EXPECT_EQ(reporting.error.str(), "zeb: in/a\\xff.mp4: careful\\x0a\n");
}

TEST(ProgressLines, ShowPartsThatFitTheWidth) {
    const ProgressState state{99, 200, 25, 5'000'000, 99.95, 59};
    const std::string rest = " 49 %  100.0 fps  0:59 left";  // 27 characters
    const std::pair<int, std::string> cases[] = {
        {0, "[" + std::string(19, '#') + std::string(21, '.') + "]  " + rest + "  5.0 MB"},
        {120, "[" + std::string(19, '#') + std::string(21, '.') + "]  " + rest + "  5.0 MB"},
        {46, "[##....]  " + rest + "  5.0 MB"},
        {45, "[##...]  " + rest + "  5.0 MB"},
        {44, "[#####.......]  " + rest},
        {43, "[#####......]  " + rest},
        {37, "[##...]  " + rest},
        {36, rest},
        {28, rest},
        {27, " 49 %  0:59 left"},
        {17, " 49 %  0:59 left"},
        {16, " 49 %"},
        {5, " 49 "},
        {1, ""},
    };
    for (const auto& [columns, line] : cases)
        EXPECT_EQ(barLine(state, columns), line) << columns;
    EXPECT_EQ(plainLine({200, 200, 25, 0, 100, 0}), "100 %  200 of 200 frames  100 fps  0:00 left  0 bytes");
    EXPECT_EQ(plainLine({1, 2, 25, 0, 0.5, 1}), " 50 %  1 of 2 frames  0.5 fps  0:01 left  0 bytes");
    EXPECT_EQ(plainLine({0, 1, 25, 0, 0, {}}), "  0 %  0 of 1 frame  -- fps  -:-- left  0 bytes");
    EXPECT_EQ(fittedLine("a\u00e4\tbc", 6), "a\u00e4\\x0");
}

TEST(SpeedMeter, AveragesOverLastTenSeconds) {
    using std::chrono::milliseconds;
    const SpeedMeter::TimePoint start{};
    SpeedMeter meter{start};
    EXPECT_FALSE(meter.secondsFor(100));
    const struct {
        int at;
        std::int64_t frames;
        double speed;
    } notes[] = {
        {199, 100, 0},  // too soon for a speed
        {200, 100, 500},
        {250, 100, 400},             // a mark
        {499, 500, 500 / 0.499},     // no sample, too close
        {5000, 500, 100},            // another sample
        {10249, 500, 500 / 10.249},  // the first sample still counts
        {10250, 500, 400 / 10.0},    // now the second sample is the oldest
        {15000, 1500, 1000 / 10.0},  // now the third one
    };
    for (const auto& [at, frames, speed] : notes) {
        meter.note(start + milliseconds(at), frames);
        EXPECT_DOUBLE_EQ(meter.speed(), speed) << at;
    }
    EXPECT_DOUBLE_EQ(meter.secondsFor(50).value(), 0.5);
    EXPECT_EQ(meter.secondsFor(0), 0);
}

}  // namespace
}  // namespace zeb::cli
