#include "cli/Text.h"

#include <gtest/gtest.h>

#include <limits>

#include "cli/ForecastText.h"

namespace zeb::cli {
namespace {

using namespace std::string_literals;

TEST(CliText, MakesTextHarmlessForTerminals) {
    const std::pair<std::string, std::string> cases[] = {
        {"Grüße, Žižek & 日本 😀", "Grüße, Žižek & 日本 😀"},
        {"\x1b[2J\x1b]0;title\x07", "\\x1b[2J\\x1b]0;title\\x07"},
        {"nul\0byte\x7f"s, "nul\\x00byte\\x7f"},
        {"\u009b31m", "\\u009b31m"},                            // the one-character form of "escape ["
        {"\u202egpj.exe\u2066", "\\u202egpj.exe\\u2066"},       // turned direction
        {"caf\xe9", "caf\\xe9"},                                // ISO Latin-1
        {"\xc0\x9b\xed\xa0\x80", "\\xc0\\x9b\\xed\\xa0\\x80"},  // overlong form, surrogate
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(printable(text), expected);
}

TEST(CliText, WritesDurations) {
    const std::pair<double, const char*> cases[] = {
        {0, "0:00"},
        {59.5, "1:00"},
        {7259, "2:00:59"},
        {std::numeric_limits<double>::quiet_NaN(), "0:00"},
        {std::numeric_limits<double>::infinity(), "1000000000:00:00"},
    };
    for (const auto& [seconds, expected] : cases)
        EXPECT_EQ(durationText(seconds), expected);
}

TEST(ForecastText, WarnsOfWhatDoesNotFit) {
    SizeForecast forecast;
    forecast.bytes = 5'900'000'000;
    forecast.isExact = true;
    forecast.formatEndsAt = 183;
    forecast.plan.seconds = 250;
    forecast.suggestion.fps = 7;
    const std::string limit = "the movie would pass the format's 4 GiB after 3:03 of 4:10";
    EXPECT_EQ(forecastWarning(forecast, "out"), limit + "; try --fps 7");
    forecast.freeSpace = 1'000'000'000;
    forecast.spaceEndsAt = 40;
    forecast.suggestion.size = FrameSize{512, 288};
    EXPECT_EQ(forecastWarning(forecast, "out"),
              limit + " and need 5.9 GB, but out has only 1.0 GB left; try --fps 7 or --size 512x288");
}

}  // namespace
}  // namespace zeb::cli
