#include "platform/text/TextFormat.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <limits>
#include <optional>

#include "platform/text/LocalizedText.h"
#include "platform/text/NumberText.h"
#include "platform/text/StringTable.h"

namespace zeb {
namespace {

using Arguments = std::vector<TextArgument>;

TextArgument whole(std::int64_t number) {
    return number;
}
TextArgument text(const char* characters) {
    return std::string(characters);
}

TEST(TextFormatTest, FillsSpecifiersWithMatchingArguments) {
    const struct {
        const char* format;
        Arguments arguments;
        const char* expected;
    } cases[] = {
        {"%lld of %lld", {whole(3), whole(-7)}, "3 of -7"},
        {"%f %.0f %.2f", {0.5, 2.0, 1.005}, "0.500000 2 1.00"},
        {"„%@“", {text("Grüße 100%")}, "„Grüße 100%“"},
        {"%2$@: %1$lld (%2$@)", {whole(9), text("a")}, "a: 9 (a)"},
        {"%lld", {whole(std::numeric_limits<std::int64_t>::min())}, "-9223372036854775808"},
        // Arguments of another type, missing arguments, and text that is no specifier.
        {"%lld %@ %.1f", {text("x"), whole(4), whole(5)}, "x 4 5"},
        {"%lld %lld %9$@", {whole(1)}, "1 %lld %9$@"},
        {"%.2f", {std::numeric_limits<double>::infinity()}, "inf"},
        {"%s %n %d %0$lld %1$ %.f %.100f %.2lld %x%",
         {whole(1)},
         "%s %n %d %0$lld %1$ %.f %.100f %.2lld %x%"},
        {"%99999999999999999999$lld", {whole(1)}, "%99999999999999999999$lld"},
    };
    for (const auto& [format, arguments, expected] : cases)
        EXPECT_EQ(formatText(format, arguments), expected) << format;
}

TEST(NumberTextTest, FormatsTimesInMinutesAndHours) {
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const struct {
        double seconds;
        const char *duration, *shown, *position;
    } cases[] = {
        {0, "0:00", "0:00", "0:00"},
        {-0.0, "0:00", "0:00", "0:00"},
        {-0.1, "0:00", "—", "0:00"},
        {-1, "0:00", "—", "0:00"},
        {0.4, "0:00", "0:00", "0:00"},
        {59.4, "0:59", "0:59", "0:59"},
        {59.5, "1:00", "1:00", "0:59"},
        {610, "10:10", "10:10", "10:10"},
        {3599.4, "59:59", "59:59", "59:59"},
        {3599.5, "1:00:00", "1:00:00", "59:59"},
        {7259, "2:00:59", "2:00:59", "2:00:59"},
        {360000, "100:00:00", "100:00:00", "100:00:00"},
        {0x1p62, "1000000000:00:00", "1281023894007607:45:04", "1281023894007607:45:04"},
        {0x1p63, "1000000000:00:00", "—", "0:00"},
        {infinity, "1000000000:00:00", "—", "0:00"},
        {infinity - infinity, "0:00", "—", "0:00"},
    };
    for (const auto& [seconds, duration, shown, position] : cases) {
        EXPECT_EQ(durationText(seconds), duration) << seconds;
        EXPECT_EQ(formatDuration(seconds), shown) << seconds;
        EXPECT_EQ(formatTime(seconds), position) << seconds;
    }
}

TEST(NumberTextTest, ChoosesUnitBySize) {
    const std::tuple<std::uint64_t, const char*, const char*> cases[] = {
        {0, "0 bytes", "0.0 kB"},
        {1, "1 byte", "0.0 kB"},
        {999, "999 bytes", "1.0 kB"},
        {1000, "1.0 kB", "1.0 kB"},
        {999'949, "999.9 kB", "999.9 kB"},
        {999'950, "1.0 MB", "1.0 MB"},
        {1'051'000, "1.1 MB", "1.1 MB"},
        {999'949'999, "999.9 MB", "999.9 MB"},
        {999'950'000, "1.0 GB", "1.0 GB"},
        {999'949'999'999, "999.9 GB", "999.9 GB"},
        {999'950'000'000, "1.0 TB", "1.0 TB"},
        {1'234'000'000'000'000, "1234.0 TB", "1234.0 TB"},
    };
    for (const auto& [bytes, english, shown] : cases) {
        EXPECT_EQ(byteText(bytes), english);
        EXPECT_EQ(byteCountText(bytes), shown);
    }
    EXPECT_EQ(megabytesText(2'500'000'000), "2500.0 MB");
}

TEST(StringTableTest, ReportsLineOfSyntaxError) {
    const std::pair<const char*, const char*> cases[] = {
        {"\n\nkey = \"x\";", "line 3: expected \""},
        {"\"a\" = \"x\";\n\"b\" = \"y", "line 2: text does not end"},
        {"\"a\" = \"\\t\";", "line 1: unknown escape \\t"},
        {"\"a\" = \"x\";\n\"a\" = \"y\";", "line 2: key occurs twice: a"},
    };
    for (const auto& [source, message] : cases) {
        try {
            StringTable::parse(source);
            ADD_FAILURE() << source;
        } catch (const std::invalid_argument& mistake) {
            EXPECT_STREQ(mistake.what(), message) << source;
        }
    }
}

TEST(TextLocaleTest, TextsFollowLanguageAndDecimalMark) {
    const TextLocale before = textLocale();
    setTextLocale({"de", ","});
    EXPECT_EQ(localizedText("cancel"), "Abbrechen");
    EXPECT_THAT(
        localizedText("progress_analyze_format", {whole(1920), whole(1080), whole(25), whole(448), whole(256),
                                                  whole(10), 2.5, whole(30), whole(3)}),
        testing::HasSubstr("1920 × 1080 bei 25 Bildern/s, Film 448 × 256 bei 10 Bildern/s: aus 2,50 s"));
    EXPECT_EQ(localizedText("no such key", {whole(1)}), "no such key");
    const KeyedText nested{"log_error_format",
                           {KeyedText{"error_file_format", {text("a"), KeyedText{"cancel"}}}}};
    EXPECT_EQ(localizedText(nested), "Fehler: a: Abbrechen");
    EXPECT_EQ(englishText(nested), "Error: a: Cancel");
    setTextLocale(before);
}

TEST(TextLocaleTest, EnvironmentSelectsTheLanguage) {
    const char* const names[] = {"LC_ALL", "LC_MESSAGES", "LANG", "LANGUAGE"};
    const struct {
        const char* values[4];  // nullptr: not set
        const char* language;
    } cases[] = {
        {{nullptr, nullptr, nullptr, nullptr}, "en"},
        {{nullptr, nullptr, "de_DE.UTF-8", nullptr}, "de"},
        {{nullptr, "de", "en_GB.UTF-8", nullptr}, "de"},
        {{"de_AT@euro", "en_GB", "en_GB", nullptr}, "de"},
        {{"", "", "de_CH", nullptr}, "de"},
        {{"C", "de_DE", "de_DE", "de"}, "en"},
        {{"C.UTF-8", "de_DE", "de_DE", "de"}, "en"},
        {{"POSIX", nullptr, "de_DE", nullptr}, "en"},
        {{"fr_FR.UTF-8", nullptr, "de_DE", nullptr}, "en"},
        {{"fr_FR.UTF-8", nullptr, nullptr, "it:de:en"}, "de"},
        {{"de_DE.UTF-8", nullptr, nullptr, "en_GB:de"}, "en"},
        {{nullptr, nullptr, nullptr, "de"}, "en"},
    };
    std::vector<std::optional<std::string>> before;
    for (const char* name : names) {
        const char* value = std::getenv(name);
        before.push_back(value != nullptr ? std::optional<std::string>(value) : std::nullopt);
    }
    const auto set = [](const char* name, const char* value) {
        value != nullptr ? setenv(name, value, 1) : unsetenv(name);
    };
    for (const auto& each : cases) {
        for (std::size_t i = 0; i < std::size(names); ++i)
            set(names[i], each.values[i]);
        EXPECT_EQ(environmentTextLocale(), (TextLocale{each.language, "."}))
            << testing::PrintToString(std::vector(std::begin(each.values), std::end(each.values)));
    }
    for (std::size_t i = 0; i < std::size(names); ++i)
        set(names[i], before[i] ? before[i]->c_str() : nullptr);
}

}  // namespace
}  // namespace zeb
