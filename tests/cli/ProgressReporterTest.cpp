#include "cli/ProgressReporter.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <sstream>

namespace zeb::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

enum class Look { file, terminal, colourTerminal };

class Reporting {
public:
    Reporting(ProgressStyle style, Look look, Verbosity verbosity = Verbosity::quiet)
        : m_console(m_out, m_error, terminal(look), terminal(look)),
          m_reporter(makeProgressReporter(style, m_console, verbosity)) {}

    // A conversion from its start to 100 of 250 frames.
    ProgressReporter& begin() {
        m_reporter->began({"in/a\xff.mp4", "out/\u00e4.zeb"});
        Settings settings;
        settings.title = "\x1b]0;\"T\u00eftle\"";
        m_reporter->planned(settings, {{1920, 1080, 25}, {448, 256}, 25, 9.6, 10, 250});
        m_reporter->logged("analysing");
        m_reporter->advanced({1, 250, 25, 100, 0, std::nullopt});
        m_reporter->warned("careful\n");
        m_reporter->advanced({100, 250, 25, 5000, 50, 3});
        return *m_reporter;
    }

    std::string out() const { return m_out.str(); }
    std::string error() const { return m_error.str(); }

private:
    static Terminal terminal(Look look) {
        return {look != Look::file, look == Look::colourTerminal, [] { return 60; }};
    }

    std::ostringstream m_out, m_error;
    Console m_console;
    std::unique_ptr<ProgressReporter> m_reporter;
};

const EncodeSummary summary{{448, 256}, 250, 10, 1'500'000, 2.5};
const EncodeFailure failure{"disk full", ExitCode::unwritableOutput, 4};

std::vector<nlohmann::json> parsedLines(const std::string& text) {
    std::vector<nlohmann::json> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(nlohmann::json::parse(line));
    return lines;
}

TEST(JsonProgress, WritesOneObjectPerLine) {
    Reporting reporting(ProgressStyle::json, Look::file);
    reporting.begin().finished(summary);
    const auto lines = parsedLines(reporting.out());
    ASSERT_EQ(lines.size(), 5u);  // the second "progress" came too soon after the first
    const char* types[] = {"start", "log", "progress", "warning", "done"};
    for (std::size_t i = 0; i < lines.size(); ++i) {
        EXPECT_EQ(lines[i]["type"], types[i]);
        EXPECT_EQ(lines[i]["input"], "in/a\ufffd.mp4");
    }
    EXPECT_EQ(lines[0]["output"], "out/\u00e4.zeb");
    EXPECT_EQ(lines[0]["title"], "\x1b]0;\"T\u00eftle\"");
    EXPECT_EQ(lines[0]["width"], 448);
    EXPECT_EQ(lines[0]["sourceSeconds"], 9.6);
    EXPECT_EQ(lines[2]["frames"], 1);
    EXPECT_EQ(lines[2]["fraction"], 0.004);
    EXPECT_TRUE(lines[2]["remainingSeconds"].is_null());
    EXPECT_EQ(lines[3]["message"], "careful\n");
    EXPECT_EQ(lines[4]["bytes"], 1'500'000);
    for (const char c : reporting.out())
        EXPECT_TRUE(c == '\n' || (c >= 0x20 && c < 0x7f));
}

TEST(JsonProgress, ReportsFailures) {
    Reporting reporting(ProgressStyle::json, Look::file);
    reporting.begin().failed(failure);
    const nlohmann::json last = parsedLines(reporting.out()).back();
    EXPECT_EQ(last["type"], "error");
    EXPECT_EQ(last["message"], "disk full");
    EXPECT_EQ(last["exitCode"], 4);
    EXPECT_EQ(last["keptSeconds"], 4);
    EXPECT_THAT(reporting.error(), HasSubstr("zeb: in/a\\xff.mp4: disk full\n"));
}

TEST(BarProgress, KeepsToOneLineBelowTheMessages) {
    Reporting reporting(ProgressStyle::automatic, Look::terminal);
    reporting.begin().finished(summary);
    EXPECT_THAT(reporting.out(), Not(HasSubstr("\x1b")));
    // The log's line while there are no frames, the bar, wiped for the warning, drawn again, the summary.
    EXPECT_THAT(reporting.out(), HasSubstr("\ranalysing"));
    EXPECT_THAT(reporting.out(),
                HasSubstr("\r[....................]    0 %  -- fps  -:-- left  100 bytes\r"));
    EXPECT_THAT(reporting.out(),
                ::testing::EndsWith(" \rout/\u00e4.zeb: 448x256, 250 frames, 0:10, 1.5 MB\n"));
    EXPECT_EQ(reporting.error(), "zeb: in/a\\xff.mp4: careful\\x0a\n");
    const std::string out = reporting.out();
    EXPECT_EQ(std::count(out.begin(), out.end(), '\n'), 1);
}

TEST(BarProgress, ColoursTerminalsThatWantIt) {
    Reporting reporting(ProgressStyle::automatic, Look::colourTerminal);
    reporting.begin().failed(failure);
    EXPECT_THAT(reporting.out(), HasSubstr("\x1b[32m[\x1b[0m"));
    EXPECT_THAT(reporting.error(), HasSubstr("\x1b[31mzeb: in/a\\xff.mp4: disk full\x1b[0m\n"));
}

TEST(PlainProgress, WritesLinesAtWholeSeconds) {
    Reporting reporting(ProgressStyle::automatic, Look::file);
    reporting.begin().finished(summary);
    EXPECT_EQ(reporting.out(),
              "in/a\\xff.mp4 -> out/\u00e4.zeb: 448x256, 25 frames per second, 0:10, Mode 32\n"
              " 40 %  100 of 250 frames  50.0 fps  0:03 left  5.0 kB\n"
              "out/\u00e4.zeb: 448x256, 250 frames, 0:10, 1.5 MB\n");
    EXPECT_EQ(reporting.error(), "zeb: in/a\\xff.mp4: careful\\x0a\n");
}

TEST(ProgressReporter, LogsWhenAsked) {
    Reporting reporting(ProgressStyle::none, Look::file, Verbosity::verbose);
    reporting.begin().finished(summary);
    EXPECT_EQ(reporting.error(), "analysing\nzeb: in/a\\xff.mp4: careful\\x0a\n");
    EXPECT_EQ(reporting.out(), "out/\u00e4.zeb: 448x256, 250 frames, 0:10, 1.5 MB\n");
}

TEST(ProgressReporter, NamesAFileOnce) {
    Reporting reporting(ProgressStyle::none, Look::file);
    reporting.begin().failed({"out/\u00e4.zeb: No space left on device", ExitCode::unwritableOutput, 0});
    EXPECT_THAT(reporting.error(), ::testing::EndsWith("\nzeb: out/\u00e4.zeb: No space left on device\n"));
}

}  // namespace
}  // namespace zeb::cli
