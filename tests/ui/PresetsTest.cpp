#include <gmock/gmock.h>

#include <limits>

#include "platform/settings/PropertyList.h"
#include "tests/doubles/FakeUserDefaults.h"
#include "ui/presets/PresetEditor.h"
#include "ui/presets/StoredPresets.h"

namespace zeb {

void PrintTo(const UserPreset& preset, std::ostream* stream) {
    *stream << preset.id << " '" << preset.name << "' " << preset.width << "x" << preset.height;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

PropertyData bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string textOf(const PropertyData& bytes) {
    return {bytes.begin(), bytes.end()};
}

constexpr const char* uuid = "E621E1F8-C36C-495A-93FC-0C247A3E6E5F";

std::string presetJSON(std::string_view id, std::string_view name, int width, int height) {
    return "{\"id\":\"" + std::string(id) + "\",\"name\":\"" + std::string(name) +
           "\",\"width\":" + std::to_string(width) + ",\"height\":" + std::to_string(height) + "}";
}

TEST(PresetRulesTest, ReadsIntegersLeniently) {
    const std::pair<PropertyValue, std::optional<std::int64_t>> cases[] = {
        {640.9, 640},
        {0x1p63, {}},
        {-0x1p63, std::numeric_limits<std::int64_t>::min()},
        {std::numeric_limits<double>::quiet_NaN(), {}},
        {"1,280 px", 1280},
        {"-5", 5},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"9223372036854775808", {}},
        {"٦٤٠", {}},
        {"640 Äpfel \xFF", 640},
        {PropertyArray{640}, {}},
    };
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(lenientInteger(value), expected) << testing::PrintToString(expected.value_or(0));
}

TEST(PresetRulesTest, ParsesAndMergesRecords) {
    const auto presets = parsePresetDictionaries({
        {{"title", "Clip"}, {"w", "640 px"}, {"presetH", 480}},
        {{"name", " A "}, {"title", "B"}, {"width", 1}, {"w", 5}, {"height", 2.9}, {"id", 7}, {"uuid", "u"}},
        {{"name", 1}, {"label", "L"}, {"width", "none"}, {"w", 3}, {"h", 4}, {"identifier", "i"}, {"id", ""}},
        {{"w", 3}, {"h", 4}},
        {{"name", "no height"}, {"width", 640}},
        {{"name", "no width"}, {"width", 0}, {"w", 640}, {"height", 480}},
    });
    EXPECT_THAT(presets,
                ElementsAre(UserPreset{"clip_640x480", "Clip", 640, 480}, UserPreset{"u", " A ", 1, 2},
                            UserPreset{"l_3x4", "L", 3, 4}, UserPreset{"preset_3x4", "Preset", 3, 4}));
    PresetCollection collection;
    mergePresets(collection, {{"a", "  ", 1, 1}, {"b", "B", 1, 1}, {"a", "\n", 2, 2}});
    mergePresets(collection, {{"a", "Clip", 3, 4}, {"b", "Other", 5, 6}, {"a", "Late", 7, 8}});
    EXPECT_THAT(collection,
                ElementsAre(Pair("a", UserPreset{"a", "Clip", 3, 4}), Pair("b", UserPreset{"b", "B", 1, 1})));
    EXPECT_EQ(makePresetID("@AZ[", 1, 2, ""), "@az[_1x2");
    EXPECT_EQ(makePresetID("Clip", 1, 2, "id"), "id");
    EXPECT_EQ(makePresetID("\tÄ  ÉTÉ\tЖ\n", 1, 2, std::nullopt), "ä__été\tж_1x2");
}

TEST(PresetRulesTest, DecodersRejectAnyOtherShape) {
    const std::string rest = "\",\"name\":\"n\",\"height\":0,\"width\":";
    const auto width = [&](const char* number) -> std::optional<std::int64_t> {
        const auto presets = decodeUserPresets(bytesOf("[{\"id\":\"i" + rest + number + "}]"));
        return presets && presets->size() == 1 ? std::optional(presets->front().width) : std::nullopt;
    };
    const std::pair<const char*, std::optional<std::int64_t>> numbers[] = {
        {"6.4e2", 640},
        {"-0", 0},
        {"\"640\"", {}},
        {"9223372036854775807", std::numeric_limits<std::int64_t>::max()},
        {"9223372036854775808", {}},
        {"9223372036854775808.0", {}},
        {"-9223372036854775808.0", std::numeric_limits<std::int64_t>::min()},
        {"-9223372036854777856.0", {}},
        {"1.5", {}},
        {"true", {}},
        {"1e999", {}},
        {"640,\"extra\":{}", 640},
    };
    for (const auto& [number, expected] : numbers)
        EXPECT_EQ(width(number), expected) << number;
    EXPECT_THAT(decodeUserPresets(bytesOf(" [] ")), testing::Optional(IsEmpty()));
    for (const char* json : {"", "{}", "[1]", "[{\"name\":\"n\",\"width\":1,\"height\":1}]", "[", "[]]"})
        EXPECT_EQ(decodeUserPresets(bytesOf(json)), std::nullopt) << json;
    EXPECT_EQ(decodeUserPresets(PropertyData(1'000'000, '[')), std::nullopt);
    EXPECT_EQ(
        decodeUserPresets(bytesOf("[{\"a\":" + std::string(100'000, '[') + std::string(100'000, ']') + "}]")),
        std::nullopt);

    const auto editorID = [](std::string_view id) {
        const auto presets = decodeEditorPresets(bytesOf("[" + presetJSON(id, "n", 1, 1) + "]"));
        return presets ? presets->front().id : "none";
    };
    EXPECT_EQ(editorID("09AF09af-09AF-09af-09AF-09AF09af09AF"), "09AF09AF-09AF-09AF-09AF-09AF09AF09AF");
    EXPECT_EQ(editorID("e621e1f8-c36c-495a-93fc-0c247a3e6e5f"), uuid);
    for (const char* id : {"", "e621e1f8-c36c-495a-93fc-0c247a3e6e5", "e621e1f8-c36c-495a-93fc-0c247a3e6e5f0",
                           "e621e1f8-c36c-495a-93fc-0c247a3e6e5g", "e621e1f80c36c-495a-93fc-0c247a3e6e5f",
                           "/621e1f8-c36c-495a-93fc-0c247a3e6e5f", ":621e1f8-c36c-495a-93fc-0c247a3e6e5f",
                           "@621e1f8-c36c-495a-93fc-0c247a3e6e5f", "G621e1f8-c36c-495a-93fc-0c247a3e6e5f",
                           "`621e1f8-c36c-495a-93fc-0c247a3e6e5f"})
        EXPECT_EQ(editorID(id), "none") << id;
}

class PresetsTest : public testing::Test {
protected:
    std::vector<UserPreset> collected() { return collectUserPresets(m_defaults, isBeforeInAnyLanguage); }

    NotificationCenter m_notifications;
    fake::FakeUserDefaults m_defaults{m_notifications};
};

TEST_F(PresetsTest, ReadsEveryStoredShape) {
    const PropertyArray records = {"no record", PropertyDictionary{{"title", "Clip"}, {"w", 640}, {"h", 480}},
                                   7};
    const UserPreset clip{"clip_640x480", "Clip", 640, 480};
    const std::pair<PropertyValue, std::vector<UserPreset>> cases[] = {
        {bytesOf("[" + presetJSON("x", "", 0, -1) + "]"), {{"x", "", 0, -1}}},
        {bytesOf(R"([{"title":"Clip","w":"640 px","h":480.7,"x":null}])"), {clip}},
        {bytesOf(R"([{"title":"Clip","w":640,"h":480},1])"), {}},
        {propertyList::writeXML(records), {clip}},
        {propertyList::writeXML(records[1]), {}},
        {bytesOf("({ title = Clip; w = 640; h = \"480 px\"; }, x)"), {clip}},
        {bytesOf("garbage!"), {}},
        {records, {clip}},
        {"[]", {}},
    };
    for (const auto& [value, expected] : cases) {
        m_defaults.set("presets.custom", value);
        EXPECT_EQ(collected(), expected) << textOf(propertyList::writeXML(value));
    }
}

TEST_F(PresetsTest, ReadsPresetsOfEarlierVersions) {
    const PropertyArray records = {PropertyDictionary{{"title", "Clip"}, {"w", 640}, {"h", 480}}};
    for (const auto& [key, isPlace] : {std::pair{"preset", true},
                                       {"myPRESETlist", true},
                                       {"PreSet", true},
                                       {"zebmaker.userpresets", true},
                                       {"prese", false},
                                       {"presen", false},
                                       {"p reset", false},
                                       {"window", false}}) {
        m_defaults.set(key, records);
        EXPECT_EQ(collected().size(), isPlace ? 1U : 0U) << key;
        m_defaults.set(key, PropertyArray());
    }
    for (const auto& [first, second] :
         {std::pair{"a", "B"}, {"A", "b"}, {"@", "A"}, {"Z", "["}, {"[", "a"}, {"Z", "ä"}}) {
        const bool isAfterLetters = std::string(second) == "[";  // "Z" is compared as "z"
        EXPECT_EQ(isBeforeInAnyLanguage(first, second), !isAfterLetters) << first << second;
        EXPECT_EQ(isBeforeInAnyLanguage(second, first), isAfterLetters) << first << second;
    }
    EXPECT_FALSE(isBeforeInAnyLanguage("Az", "aZ"));
}

class PresetEditorTest : public PresetsTest {
protected:
    std::string stored() { return textOf(m_defaults.data("userPresetsJSON").value_or(PropertyData())); }

    int m_lists = 0;
    std::vector<std::size_t> m_rows;
    PresetEditor m_editor{m_defaults,
                          m_notifications,
                          {[this] { ++m_lists; }, [this](std::size_t row) { m_rows.push_back(row); }, [] {}}};
};

TEST_F(PresetEditorTest, StoresEveryChangeAtOnce) {
    m_editor.loadUserPresets();
    m_editor.addUserPreset("New", 1280, 720);
    m_editor.addUserPreset("4K", 3840, 2160);
    const std::string first = m_editor.userPresets()[0].id;
    const std::string second = m_editor.userPresets()[1].id;
    EXPECT_NE(first, second);
    m_editor.setName(0, "");
    m_editor.setWidth(0, 1288);
    m_editor.setHeight(1, 2168);
    m_editor.setHeight(1, 2168);
    EXPECT_EQ(stored(),
              "[" + presetJSON(first, "", 1288, 720) + "," + presetJSON(second, "4K", 3840, 2168) + "]");
    EXPECT_THAT(m_rows, ElementsAre(0, 0, 1));
    m_editor.deleteUserPreset(first);
    EXPECT_EQ(stored(), "[" + presetJSON(second, "4K", 3840, 2168) + "]");
    EXPECT_EQ(m_lists, 3);

    m_editor.addUserPreset("no UTF-8: \xFF", 1, 1);
    EXPECT_EQ(stored(), "");
    EXPECT_THAT(m_editor.userPresets(), SizeIs(2));
}

TEST_F(PresetEditorTest, TakesOverChangesOfOtherWindows) {
    PresetEditor other(m_defaults, m_notifications);
    other.addUserPreset("theirs", 1, 1);
    m_editor.addUserPreset("mine", 2, 2);
    other.setName(0, "still theirs");
    EXPECT_THAT(m_editor.userPresets(), SizeIs(2));
    EXPECT_EQ(m_editor.userPresets(), other.userPresets());
    EXPECT_EQ(m_editor.userPresets()[0].name, "still theirs");

    m_defaults.set("userPresetsJSON", bytesOf("damaged"));
    EXPECT_THAT(m_editor.userPresets(), IsEmpty());
    EXPECT_EQ(stored(), "damaged") << "until the next change";
    m_editor.addUserPreset("new", 1, 1);
    EXPECT_EQ(other.userPresets(), m_editor.userPresets());
}

}  // namespace
}  // namespace zeb
