#include "platform/settings/PropertyList.h"

#include <gmock/gmock.h>

#include "platform/settings/PropertyListTree.h"

namespace zeb::propertyList {
namespace {

using testing::HasSubstr;
using testing::Not;

PropertyData bytesOf(std::string_view text) {
    return {text.begin(), text.end()};
}

std::string textOf(const PropertyData& bytes) {
    return {bytes.begin(), bytes.end()};
}

std::optional<PropertyValue> parsed(const PropertyData& bytes) {
    try {
        return parse(bytes);
    } catch (const PropertyListError&) {
        return std::nullopt;
    }
}

std::string xml(std::string_view body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
           "<!DOCTYPE plist PUBLIC \"-//X//DTD PLIST 1.0//EN\" "
           "\"http://www.example.com/PropertyList-1.0.dtd\">\n"
           "<plist version=\"1.0\">" +
           std::string(body) + "</plist>";
}

/// A binary list of these objects. The first one is the root. Offsets and references have one byte.
PropertyData binary(const std::vector<PropertyData>& objects) {
    PropertyData bytes = bytesOf("bplist00"), offsets;
    for (const PropertyData& object : objects) {
        offsets.push_back(static_cast<std::uint8_t>(bytes.size()));
        bytes.insert(bytes.end(), object.begin(), object.end());
    }
    const auto table = static_cast<std::uint8_t>(bytes.size());
    bytes.insert(bytes.end(), offsets.begin(), offsets.end());
    PropertyData trailer(32, 0);
    trailer[6] = trailer[7] = 1;
    trailer[15] = static_cast<std::uint8_t>(objects.size());
    trailer[31] = table;
    bytes.insert(bytes.end(), trailer.begin(), trailer.end());
    return bytes;
}

const PropertyDictionary everyKind = {{"whole", std::int64_t{-5}},
                                      {"most", std::numeric_limits<std::int64_t>::max()},
                                      {"real", 0.1},
                                      {"truth", true},
                                      {"text & <key>", "Äpfel \"& <b>\" \xF0\x9F\x8D\x8E"},
                                      {"bytes", PropertyData{0, 1, 255}},
                                      {"none", PropertyData{}},
                                      {"list", PropertyArray{1, PropertyArray{}, PropertyDictionary{}}}};

TEST(PropertyListTest, ReadsBackFromXMLAndBinary) {
    EXPECT_EQ(parsed(writeXML(everyKind)), everyKind);
    EXPECT_EQ(textOf(writeXML("a\1b\0")), textOf(writeXML("a\xEF\xBF\xBD"
                                                          "b")));
    EXPECT_EQ(parsed(binary({{0xD2, 1, 2, 3, 4},
                             {0x51, 'a'},
                             {0x61, 0x00, 0xE4},
                             {0x13, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFE},
                             {0x42, 1, 2}})),
              (PropertyDictionary{{"a", -2}, {"ä", PropertyData{1, 2}}}));
}

TEST(PropertyListTest, ReadsOldTextFormat) {
    const std::pair<std::string, PropertyValue> cases[] = {
        {"{ name = \"QL \\\"Demo\\\"\"; size = (640, 480,); } // end",
         PropertyDictionary{{"name", "QL \"Demo\""}, {"size", PropertyArray{"640", "480"}}}},
        {"/* a */ ( <0fbd77 1C>, <>, 'it\\'s', a.b/c:d-e_$ )",
         PropertyArray{PropertyData{0x0F, 0xBD, 0x77, 0x1C}, PropertyData{}, "it's", "a.b/c:d-e_$"}},
        {"{a; 'b c' = {};}", PropertyDictionary{{"a", "a"}, {"b c", PropertyDictionary{}}}},
    };
    for (const auto& [text, value] : cases)
        EXPECT_EQ(parsed(bytesOf(text)), value) << text;
    EXPECT_EQ(*parsed(bytesOf(R"("\U00e4 \Ud83c\Udf4e \U3b1|\101\n\365 \q\Ud83c")"))->as<std::string>(),
              "ä \xF0\x9F\x8D\x8E α|A\nı q\xEF\xBF\xBD");
    EXPECT_EQ(parsed(bytesOf("\"\xD9 ä\"")), "ä ˆ⁄") << "a byte that is no UTF-8 makes all of it NeXTSTEP's";
    EXPECT_EQ(parsed(PropertyData{0xFF, 0xFE, '(', 0, 'a', 0, ')', 0}), PropertyArray{"a"});
    EXPECT_EQ(parsed(PropertyData{0xFE, 0xFF, 0, '"', 0, 0xE4, 0, '"'}), "ä");
    for (const char* text : {"", " ", "{", "{a = }", "{a = b", "(a b)", "(a", "<0>", "<0g>", "\"a", "\"a\\",
                             "a b", "/* a", "{a = b;} c", "ä"}) {
        EXPECT_EQ(parsed(bytesOf(text)), std::nullopt) << text;
    }
}

std::string repeated(std::string_view text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i)
        all += text;
    return all;
}

TEST(PropertyListTest, RejectsHostileLists) {
    const auto nested = [](int depth) {
        return bytesOf(xml(repeated("<array>", depth) + repeated("</array>", depth)));
    };
    EXPECT_NE(parsed(nested(greatestDepth - 1)), std::nullopt);
    std::vector<PropertyData> sharing = {
        {0xA2, 1, 1}};  // each array contains the next one twice: 2^60 values in 60 objects
    for (std::uint8_t i = 2; i < 60; ++i)
        sharing.push_back({0xA2, i, i});
    sharing.push_back({0x09});
    PropertyData farTable = binary({{0x09}});
    farTable[farTable.size() - 8] = 0x7F;
    PropertyData manyObjects = binary({{0x09}});
    manyObjects[manyObjects.size() - 24] = 0x20;
    const std::pair<const char*, PropertyData> cases[] = {
        {"a million arrays", nested(1'000'000)},
        {"in the old form", bytesOf(repeated("(", 1'000'000))},
        {"levels that a quote seems to close",
         bytesOf(xml(repeated("<array><plist a='\"'></array></plist>", 100'000)))},
        {"entities", bytesOf("<?xml version=\"1.0\"?><!DOCTYPE plist [<!ENTITY a \"aaaa\"><!ENTITY b "
                             "\"&a;&a;\">]><plist><string>&b;</string></plist>")},
        {"cut", bytesOf("<?xml version=\"1.0\"?><plist><dict><key>a</key>")},
        {"too many", bytesOf(xml("<array>" + repeated("<true/>", 100'001) + "</array>"))},
        {"contains itself", binary({{0xA1, 1}, {0xA1, 0}})},
        {"shares", binary(sharing)},
        {"promises 2^60 bytes", binary({{0x4F, 0x13, 0x10, 0, 0, 0, 0, 0, 0, 0}})},
        {"promises 2^63 references", binary({{0xAF, 0x13, 0x80, 0, 0, 0, 0, 0, 0, 0}})},
        {"refers beyond the objects", binary({{0xA1, 7}})},
        {"a table beyond the file", farTable},
        {"2^61 objects", manyObjects},
        {"a signature alone", bytesOf("bplist00")},
        {"too large", PropertyData(largestSize + 1, 'a')},
    };
    for (const auto& [name, bytes] : cases)
        EXPECT_EQ(parsed(bytes), std::nullopt) << name;

    PropertyValue deep = 1;
    for (int i = 0; i < greatestDepth + 1; ++i)
        deep = PropertyArray{std::move(deep)};
    EXPECT_THROW(writeXML(deep), PropertyListError);
}

TEST(PropertyListTest, SurvivesEveryCutAndFlippedByte) {
    PropertyListTree tree(everyKind);
    const PropertyData asXML = tree.bytes();
    const PropertyData asBinary =
        binary({{0xD2, 1, 2, 3, 4}, {0x51, 'a'}, {0x51, 'b'}, {0xA1, 2}, {0x33, 1, 2, 3, 4, 5, 6, 7, 8}});
    const PropertyData asText = bytesOf("{ a = (1, \"\\U00e4\", <0f>); /* b */ }");
    for (const PropertyData& bytes : {asXML, asBinary, asText}) {
        EXPECT_NE(parsed(bytes), std::nullopt);
        for (std::size_t i = 0; i < bytes.size(); ++i) {
            parsed(PropertyData(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(i)));
            for (const int value : {0x00, 0x0F, 0x3C, 0x7F, 0xAF, 0xFF}) {
                PropertyData changed = bytes;
                changed[i] = static_cast<std::uint8_t>(value);
                parsed(changed);
            }
        }
    }
}

TEST(PropertyListTest, KeepsUnknownValuesAndFormat) {
    auto tree = PropertyListTree::parse(
        bytesOf(xml("<dict><key>day</key><date>1999-12-31T23:59:59Z</date><key>big</key>"
                    "<integer>18446744073709551615</integer><key>old</key><true/></dict>")));
    tree.set("new", 7);
    tree.remove("old");
    tree.remove("never");
    EXPECT_THAT(textOf(tree.bytes()),
                AllOf(HasSubstr("<date>1999-12-31T23:59:59Z</date>"), HasSubstr("<integer>7</integer>"),
                      HasSubstr("<integer>18446744073709551615</integer>"), Not(HasSubstr("old"))));
    EXPECT_TRUE(tree.contains("day"));
    EXPECT_EQ(tree.value(), (PropertyDictionary{{"new", 7}, {"big", 18446744073709551615.0}}));

    // XML cannot store a date with half a second, so a binary list stays binary.
    auto fromBinary =
        PropertyListTree::parse(binary({{0xD1, 1, 2}, {0x51, 'a'}, {0x33, 0x3F, 0xE0, 0, 0, 0, 0, 0, 0}}));
    fromBinary.set("b", true);
    const std::string bytes = textOf(fromBinary.bytes());
    EXPECT_THAT(bytes, testing::StartsWith("bplist00"));
    EXPECT_THAT(bytes, HasSubstr(std::string("\x33\x3F\xE0\0\0\0\0\0\0", 9)));
}

}  // namespace
}  // namespace zeb::propertyList
