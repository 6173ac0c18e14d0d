#include "platform/settings/UserDefaults.h"

#include <gtest/gtest.h>

#include <limits>

#include "tests/doubles/FakeUserDefaults.h"

namespace zeb {
namespace {

TEST(UserDefaultsTest, ConvertsCompatibleTypesOnly) {
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    const struct {
        PropertyValue value;
        std::int64_t integer;
        bool boolean;
        std::optional<std::string> text;
    } cases[] = {
        {720, 720, true, "720"},
        {least, least, true, "-9223372036854775808"},
        {-2.75, -2, true, "-2.75"},
        {1e300, most, true, "1e+300"},
        {std::numeric_limits<double>::quiet_NaN(), 0, true, "nan"},
        {false, 0, false, "0"},
        {" \t-12px", -12, true, " \t-12px"},
        {"+00", 0, false, "+00"},
        {"99999999999999999999", most, true, "99999999999999999999"},
        {"-99999999999999999999", least, true, "-99999999999999999999"},
        {"yes", 0, true, "yes"},
        {"no", 0, false, "no"},
        {"", 0, false, ""},
        {PropertyData{1}, 0, false, std::nullopt},
        {PropertyArray{1}, 0, false, std::nullopt},
    };
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults(notifications);
    for (const auto& expected : cases) {
        defaults.set("key", expected.value);
        SCOPED_TRACE(expected.text.value_or("no text"));
        EXPECT_EQ(defaults.integer("key"), expected.integer);
        EXPECT_EQ(defaults.boolean("key"), expected.boolean);
        EXPECT_EQ(defaults.text("key"), expected.text);
    }
    EXPECT_EQ(defaults.data("key"), std::nullopt);
    EXPECT_EQ(defaults.integer("other"), 0);
    EXPECT_FALSE(defaults.boolean("other"));
    EXPECT_EQ(defaults.text("other"), std::nullopt);
}

}  // namespace
}  // namespace zeb
