#include "cli/Text.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cli/commands/InfoText.h"
#include "cli/encode/ForecastText.h"
#include "platform/text/UTF8.h"

namespace zeb::cli {
namespace {

using namespace std::string_literals;

TEST(CliText, EscapesControlCharactersForTerminals) {
    const std::pair<std::string, std::string> cases[] = {
        {"Grüße, Žižek & 日本 😀", "Grüße, Žižek & 日本 😀"},
        {"\x1b[2J\x1b]0;title\x07", "\\x1b[2J\\x1b]0;title\\x07"},
        {"nul\0byte\x7f"s, "nul\\x00byte\\x7f"},
        {"\u009b31m", "\\u009b31m"},                            // the one-character form of "escape ["
        {"\u202egpj.exe\u2066", "\\u202egpj.exe\\u2066"},       // changes of text direction
        {"caf\xe9", "caf\\xe9"},                                // ISO Latin-1
        {"\xc0\x9b\xed\xa0\x80", "\\xc0\\x9b\\xed\\xa0\\x80"},  // overlong form, surrogate
    };
    for (const auto& [text, expected] : cases)
        EXPECT_EQ(printable(text), expected);
}

TEST(CliText, EscapesExactlyTheHarmfulRanges) {
    const std::pair<char32_t, const char*> escaped[] = {
        {0x00, "\\x00"},     {0x1F, "\\x1f"},     {0x7F, "\\x7f"},     {0x80, "\\u0080"},
        {0x9F, "\\u009f"},   {0x200E, "\\u200e"}, {0x200F, "\\u200f"}, {0x2028, "\\u2028"},
        {0x2029, "\\u2029"}, {0x202A, "\\u202a"}, {0x202E, "\\u202e"}, {0x2066, "\\u2066"},
        {0x2069, "\\u2069"},
    };
    for (const auto& [character, expected] : escaped) {
        std::string text;
        appendUTF8(text, character);
        EXPECT_EQ(printable(text), expected);
    }
    for (const char32_t character : {0x20, 0x7E, 0xA0, 0x7FF, 0x800, 0x200D, 0x2010, 0x2027, 0x202F, 0x2065,
                                     0x206A, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF}) {
        std::string text;
        appendUTF8(text, character);
        EXPECT_EQ(printable(text), text) << static_cast<int>(character);
        EXPECT_EQ(characterCount(text), 1U);
    }
    for (const std::string broken :
         {"\x80", "\xbf", "\xc1\xbf", "\xc2", "\xc2\xc0", "\xdf\x7f", "\xe0\x9f\xbf", "\xe1\x80",
          "\xed\xbf\xbf", "\xf0\x8f\xbf\xbf", "\xf4\x90\x80\x80", "\xf5\x80\x80\x80"}) {
        const std::string shown = printable(broken);
        EXPECT_EQ(std::ranges::count(shown, '\\') + std::ranges::count(shown, '\x7f'), std::ssize(broken))
            << shown;
    }
    EXPECT_EQ(leadingCharacters("a\u00e4\u20ac\U0001F600b", 0), "");
    EXPECT_EQ(leadingCharacters("a\u00e4\u20ac\U0001F600b", 3), "a\u00e4\u20ac");
    EXPECT_EQ(leadingCharacters("a\u00e4\u20ac\U0001F600b", 9), "a\u00e4\u20ac\U0001F600b");
}

TEST(CliText, WritesAndReadsNumbers) {
    EXPECT_EQ(countText(1, "frame", "frames"), "1 frame");
    EXPECT_EQ(countText(0, "frame", "frames"), "0 frames");
    EXPECT_EQ(decimalText(1e300, 2).size(), 304U);
    const std::pair<const char*, std::optional<int>> numbers[] = {
        {"3", 3},   {"7", 7},   {"2", {}},  {"8", {}},          {"", {}},
        {"5 ", {}}, {" 5", {}}, {"5x", {}}, {"99999999999", {}}};
    for (const auto& [text, expected] : numbers)
        EXPECT_EQ(wholeNumber(text, 3, 7), expected) << text;
}

TEST(ForecastText, WarnsOfMoviesThatDoNotFit) {
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

TEST(ForecastText, ShowsOneFactPerLine) {
    SizeForecast forecast;
    forecast.plan = {{1920, 1080, 25}, {448, 256}, 1, 61, 61, 61};
    forecast.bytes = 12'300'000;
    forecast.bytesPerSecond = 201'639.6;
    forecast.basis = ForecastBasis::bound;
    const auto text = [&] { return forecastText({"a.mov", "b\x1b.zeb"}, {.qlModeNumber = 4}, forecast); };
    const std::string head =
        "a.mov -> b\\x1b.zeb: 448x256, 1 frame per second, 1:01, Mode 4\n  File size      ";
    const std::string rate = "\n  Data rate      201.6 kB per second\n  4 GiB limit    ";
    EXPECT_EQ(text(), head + "at most 12.3 MB" + rate + "not reached\n  Free space     unknown\n");
    forecast.basis = ForecastBasis::samples;
    forecast.samples = 1;
    forecast.freeSpace = 5'000'000;
    EXPECT_EQ(text(),
              head + "about 12.3 MB (from 1 picture)" + rate + "not reached\n  Free space     5.0 MB\n");
    forecast.samples = 12;
    forecast.uncertainty = 0.0151;
    forecast.spaceEndsAt = 60;
    EXPECT_EQ(text(), head + "about 12.3 MB (within 4 %, from 12 pictures)" + rate +
                          "not reached\n  Free space     5.0 MB, used up after 1:00\n"
                          "  Suggestion     none (no frame rate or size would fit)\n");
    EXPECT_EQ(forecastWarning(forecast, "out"),
              "the movie would need about 12.3 MB, but out has only 5.0 MB left; "
              "no frame rate or size would fit");
    forecast.isExact = true;
    forecast.formatEndsAt = 59;
    forecast.suggestion.size = FrameSize{64, 40};
    EXPECT_EQ(text(), head + "12.3 MB (12300000 bytes)" + rate +
                          "passed after 0:59\n  Free space     5.0 MB, used up after 1:00\n"
                          "  Suggestion     --size 64x40\n");
    EXPECT_EQ(forecastLine(forecast), "Forecast: 12.3 MB, 201.6 kB per second");
    EXPECT_EQ(forecastWarning({}, "out"), "");
}

TEST(InfoText, ShowsOneFactPerLine) {
    MovieFacts facts;
    facts.header.title = "T\n";
    facts.header.width = 448;
    facts.header.height = 256;
    facts.header.fps = 25;
    facts.header.mode = 32;
    facts.header.frameCount = 1600;
    facts.header.sampleRate = 20000;
    facts.header.audioChannels = 2;
    facts.header.options = 1;
    facts.fileSize = 12'345'678;
    facts.wholeSeconds = 61;
    facts.wholeFrames = 1525;
    facts.largestBlock = 999;
    facts.bytesPerSecond = 1000.6;
    const std::string end =
        "  Sound          stereo, 20000 Hz, 8 bits\n  Loop           yes\n"
        "  File size      12.3 MB (12345678 bytes)\n  Data rate      1.0 kB per second\n"
        "  Largest block  999 bytes\n  Finished       no, 1525 of 1600 frames are there\n";
    EXPECT_EQ(infoText("a\x1b.zeb", facts),
              "a\\x1b.zeb\n  Title          T\\x0a\n  Size           448x256\n"
              "  Rate           25 frames per second\n  Mode           32 (16-bit high colour)\n"
              "  Frames         1525\n  Duration       1:01\n" +
                  end);
    const std::tuple<int, int, std::string, std::string> cases[] = {
        {4, 0, "4 (black, red, green, white)\n", "none\n"},
        {5, 1, "5 (unknown)\n", "mono, 20000 Hz, 8 bits\n"},
        {32, 3, "32 (16-bit high colour)\n", "3 channels, 20000 Hz, 8 bits\n"}};
    for (const auto& [mode, channels, modeText, soundText] : cases) {
        facts.header.mode = mode;
        facts.header.audioChannels = channels;
        facts.header.options = 2;
        facts.isFinished = true;
        facts.largestBlock = 1000;
        const std::string text = infoText("a", facts);
        for (const std::string& part :
             {"  Mode           " + modeText, "  Sound          " + soundText, "  Loop           no\n"s,
              "  Largest block  1.0 kB (1000 bytes)\n"s, "  Finished       yes\n"s})
            EXPECT_NE(text.find(part), std::string::npos) << part << text;
        EXPECT_NE(infoJson("a", facts).find(channels == 0 ? "\"soundRate\":0" : "\"soundRate\":20000"),
                  std::string::npos);
    }
}

}  // namespace
}  // namespace zeb::cli
