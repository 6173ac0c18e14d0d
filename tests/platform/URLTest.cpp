#include "platform/text/URL.h"

#include <gtest/gtest.h>

#include <sstream>

namespace zeb {
namespace {

using namespace std::string_literals;

URL made(const std::string& text) {
    const auto url = URL::parse(text);
    EXPECT_TRUE(url) << text;
    return url ? *url : URL::forFile("/none");
}

TEST(URL, RejectsInvalidURLs) {
    for (const std::string& text : {""s, " file:///a"s, "fi le:///a"s, "my film: part 2.mov"s,
                                    "file:///a\nb"s, "file:///a\x7F"s, "file:///a\0b"s}) {
        EXPECT_EQ(URL::parse(text), std::nullopt) << text;
    }
    std::istringstream words(
        ": 1a:b ä:b %66ile:///a http://h:80a/ http://h:1:2/ http://[::1 http://::1]/ http://a[::1]/ "
        "http://[::1]a/ http://[::1]:b/ http://[]/ http://[1:2:3:4:5:6:7]/ http://[1:2:3:4:5:6:7:8:9]/ "
        "http://[1::2::3]/ http://[1:::2]/ http://[1:2:3:4::5:6:7:8]/ http://[12345::]/ http://[::1.2.3]/ "
        "http://[::1.2.3.256]/ http://[::1.2.3.04]/ http://[1.2.3.4::]/ http://[::g]/ http://[fe80::1%25]/ "
        "http://[fe80::1%en0]/ http://[v.a]/ http://[v1.]/");
    for (std::string text; words >> text;)
        EXPECT_EQ(URL::parse(text), std::nullopt) << text;
}

TEST(URL, EscapesInvalidCharacters) {
    const std::pair<std::string, std::string> cases[] = {
        {"ZebMaker://Play?URL=%2f%2F", "ZebMaker://Play?URL=%2f%2F"},
        {"file:///my film ü.mov", "file:///my%20film%20%C3%BC.mov"},
        {"file:///Latin\xFC.mov", "file:///Latin%FC.mov"},
        {"file:///100%/%zz/%4/%41%", "file:///100%25/%25zz/%254/%41%25"},
        {"a[1]?b[2]#c[3]#d", "a%5B1%5D?b%5B2%5D#c%5B3%5D%23d"},
        {"\"<>\\^`{|}", "%22%3C%3E%5C%5E%60%7B%7C%7D"},
        {"http://a@b@c d:/?x y?", "http://a%40b@c%20d:/?x%20y?"},
        {"http://[fe80::1%25e%6e0]:8080", "http://[fe80::1%25e%6e0]:8080"},
        {"http://[::ffff:1.2.3.255]", "http://[::ffff:1.2.3.255]"},
        {"http://[1:2:3:4:5:6:7::]", "http://[1:2:3:4:5:6:7::]"},
        {"http://[1:2:3:4:5:6:7:8]", "http://[1:2:3:4:5:6:7:8]"},
        {"http://[vF.a:b]", "http://[vF.a:b]"},
        {"./a:b", "./a:b"},
        {"?", "?"},
    };
    for (const auto& [given, text] : cases)
        EXPECT_EQ(made(given).text(), text) << given;
}

TEST(URL, DistinguishesAbsentAndEmptyComponents) {
    const std::pair<std::string, std::vector<std::optional<std::string>>> cases[] = {
        {"zebmaker:encode?url=A", {"zebmaker", {}, {}, {}, "encode", "url=A", {}}},
        {"zebmaker://play?url=A", {"zebmaker", {}, "play", {}, "", "url=A", {}}},
        {"zebmaker:///play", {"zebmaker", {}, "", {}, "/play", {}, {}}},
        {"X://u:p@[::1]:80/a:b//@?c?d#e?f", {"X", "u:p", "[::1]", "80", "/a:b//@", "c?d", "e?f"}},
        {"//@:?#", {{}, "", "", "", "", "", ""}},
        {"a/b:c", {{}, {}, {}, {}, "a/b:c", {}, {}}},
    };
    for (const auto& [text, expected] : cases) {
        const auto [scheme, userInfo, host, port, path, query, fragment] = made(text).components();
        EXPECT_EQ(std::vector({scheme, userInfo, host, port, std::optional(path), query, fragment}), expected)
            << text;
    }
    EXPECT_EQ(made("x://pl%61y").host(), "play");
    EXPECT_EQ(made("x:play").host(), std::nullopt);
}

TEST(URL, DecodesPathAndExtension) {
    const struct {
        std::string text, path, extension;
    } cases[] = {
        {"file:///a/Movie.ZeB", "/a/Movie.ZeB", "ZeB"},
        {"file:///a/b.tar.gz//", "/a/b.tar.gz//", "gz"},
        {"file:///a/.zeb", "/a/.zeb", ""},
        {"file:///a/..zeb", "/a/..zeb", "zeb"},
        {"file:///a.zeb/b", "/a.zeb/b", ""},
        {"file:///a/b.", "/a/b.", ""},
        {"file:///a/..", "/a/..", ""},
        {"file:///a/b%2Eze%62", "/a/b.zeb", "zeb"},
        {"file:///a.b%2Fc", "/a.b/c", ""},
        {"file:///a/Vol. 2", "/a/Vol. 2", ""},
        {"file:///a/b.zeb%00.mov", "", ""},
        {"file:///a/b.zeb%2500", "/a/b.zeb%00", "zeb%00"},
        {"file:///a/b.zeb?c.d#e.f", "/a/b.zeb", "zeb"},
        {"file://h.zeb", "", ""},
        {"file:///", "/", ""},
        {"c.zeb", "c.zeb", "zeb"},
    };
    for (const auto& [text, path, extension] : cases) {
        EXPECT_EQ(made(text).path(), path) << text;
        EXPECT_EQ(made(text).pathExtension(), extension) << text;
    }
    for (const char* text : {"file:a", "FiLe:///a"})
        EXPECT_TRUE(made(text).isFileURL()) << text;
    for (const char* text : {"files:///a", "/file", "//file/a"})
        EXPECT_FALSE(made(text).isFileURL()) << text;
}

TEST(URL, RecognisesFilesOfThisComputer) {
    for (const char* text :
         {"file:///a", "file:/a", "file:a", "File://LOCALHOST/a", "file://me@localhost:1/a"})
        EXPECT_TRUE(made(text).isLocalFile()) << text;
    for (const char* text : {"file://h/a", "file://localhost.h/a", "file://[::1]/a", "file://",
                             "file:///a%00", "http:///a", "http://localhost/a", "/a", "a"})
        EXPECT_FALSE(made(text).isLocalFile()) << text;
}

TEST(URL, StandardisesFileURLs) {
    const std::pair<std::string, std::string> cases[] = {
        {"file:///a/./b//../%63%2e/", "file:///a/c."},
        {"FILE:/a", "file:///a"},
        {"file://LocalHost/a;b?c#d", "file:///a;b"},
        {"file:////a", "file:///a"},
        {"file:///%2e%2E/../a%2fb%41", "file:///a/bA"},
        {"file:///a/..", "file:///"},
        {"file:///...", "file:///..."},
        {"file:a/../../b", "file:../b"},
        {"file:a/..", "file:."},
        {"file://u@server:8/a/../b", "file://u@server:8/b"},
        {"file:///a%00/../b", "file:///a%00/../b"},
        {"file://", "file://"},
        {"http://h/a/../b/", "http://h/a/../b/"},
        {"a/../b", "a/../b"},
    };
    for (const auto& [given, text] : cases)
        EXPECT_EQ(made(given).standardizedFileURL().text(), text) << given;
}

}  // namespace
}  // namespace zeb
