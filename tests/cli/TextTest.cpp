#include "cli/Text.h"

#include <gtest/gtest.h>

#include <limits>

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

}  // namespace
}  // namespace zeb::cli
