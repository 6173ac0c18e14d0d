#include "app/Requests.h"

#include <gmock/gmock.h>

namespace zeb {
namespace {

using namespace std::string_literals;

/// "play URL", "play and stay URL", "encode URL" or "nothing".
std::string shown(const std::optional<AppAction>& action) {
    if (!action) return "nothing";
    if (const auto* play = std::get_if<PlayAction>(&*action)) {
        return (play->hideMaker ? "play " : "play and stay ") + play->url.text();
    }
    return "encode " + std::get<EncodeAction>(*action).url.text();
}

TEST(ParseAppAction, ParsesVerbQueryAndTarget) {
    const struct {
        std::string text, action;
    } cases[] = {
        {"zebmaker://play?url=file%3A%2F%2F%2FUsers%2Fa%2Fclip.zeb", "play file:///Users/a/clip.zeb"},
        {"zebmaker:encode?url=file:///Users/a/holiday.mov", "encode file:///Users/a/holiday.mov"},
        // The verb decides, not the target's extension.
        {"zebmaker://play?url=file:///x/y.mov", "play file:///x/y.mov"},
        {"zebmaker://encode?url=file:///x/y.zeb", "encode file:///x/y.zeb"},
        // For any other verb the target's extension decides.
        {"zebmaker://open?url=file:///x/y.ZEB", "play file:///x/y.ZEB"},
        {"zebmaker://Play?url=file:///x/y.mov", "encode file:///x/y.mov"},
        {"zebmaker://?url=file:///x/y.zeb", "play file:///x/y.zeb"},
        // The verb as host or path.
        {"zebmaker:encode/play?url=y.zeb", "encode y.zeb"},
        {"zebmaker://u@encode:80/play?url=y.zeb", "encode y.zeb"},
        {"zebmaker://enc%6Fde/play?url=y.zeb", "encode y.zeb"},
        {"zebmaker:pl%61y?url=y.mov", "play y.mov"},
        {"zebmaker:?url=y.zeb", "nothing"},
        // Names and order of query items.
        {"zebmaker://play#?url=A", "nothing"},
        {"zebmaker://play?file=file:///x/y.zeb", "nothing"},
        {"zebmaker://play?url", "nothing"},
        {"zebmaker://play?url&url=A", "nothing"},
        {"zebmaker://play?x=1&url=A&url=B", "play A"},
        {"zebmaker://play?%75rl=A+B=C", "play A+B=C"},
        // The target is decoded once and then parsed as a URL.
        {"zebmaker:encode?url=file:///50%2525.mov", "encode file:///50%25.mov"},
        {"zebmaker:encode?url=file:///a%FF.mov", "encode file:///a%FF.mov"},
        {"zebmaker:x?url=file:///a.mov%2500.zeb", "encode file:///a.mov%00.zeb"},
        {"zebmaker:encode?url=file:///a%00.mov", "nothing"},
        {"zebmaker:encode?url=file:///a%0A.mov", "nothing"},
        {"zebmaker:encode?url=my:film:1", "encode my:film:1"},
        // Schemes are compared exactly, except "file".
        {"ZEBMAKER://play?url=file:///x/y.zeb", "nothing"},
        {"/x/y.zeb", "nothing"},
        {"", "nothing"},
        {"zebmaker://play?url=A\n"s, "nothing"},
        {"file:///a/Movie.ZeB", "play file:///a/Movie.ZeB"},
        {"FILE:///a/Movie.mp4", "encode FILE:///a/Movie.mp4"},
        {"file:///a/.zeb", "encode file:///a/.zeb"},
        {"file:///encode?url=y.zeb", "encode file:///encode?url=y.zeb"},
    };
    for (const auto& [text, action] : cases)
        EXPECT_EQ(shown(parseAppAction(text)), action) << text;
}

}  // namespace
}  // namespace zeb
