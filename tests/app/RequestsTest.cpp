#include "app/Requests.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "platform/files/StandardFolders.h"
#include "tests/doubles/HandDrivenMainActor.h"
#include "tests/platform/TemporaryFolder.h"
#include "ui/model/AppActionRouter.h"

namespace zeb {
namespace {

namespace fs = std::filesystem;
using namespace std::string_literals;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

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

AppAction encode(const std::string& path) {
    return EncodeAction{URL::forFile(path)};
}

TEST(AppActionRouter, NotifiesAllObserversInOrder) {
    AppActionRouter router;
    EXPECT_EQ(router.request(), std::nullopt);
    router.post(encode("/before"));
    std::vector<AppAction> first, second;
    auto ending = router.observe([&](const AppActionRequest& request) {
        first.push_back(request.action);
        if (first.size() == 1) {
            router.post(encode("/b"));
            router.post(encode("/b"));
        }
    });
    const auto staying =
        router.observe([&](const AppActionRequest& request) { second.push_back(request.action); });
    router.post(encode("/a"));
    EXPECT_THAT(first, ElementsAre(encode("/a"), encode("/b"), encode("/b")));
    EXPECT_EQ(second, first);

    const AppActionRequest before = router.request().value();
    EXPECT_EQ(before.action, encode("/b"));
    ending = {};
    router.post(encode("/b"));
    EXPECT_NE(router.request(), before) << "a fresh id";
    EXPECT_EQ(first.size(), 3u);
    EXPECT_EQ(second.size(), 4u);
}

TEST(OpenedURLs, RunInOrderAfterCallReturns) {
    std::vector<std::string> events;
    fake::HandDrivenMainActor mainActor;
    AppActionRouter router;
    const auto observation = router.observe([&](const AppActionRequest& request) {
        events.push_back("encode " + std::get<EncodeAction>(request.action).url.text());
        // Work posted by an observer runs after all URLs of the same call.
        mainActor.post([&] { events.emplace_back("later"); });
    });
    const auto openPlayer = [&](const URL& url, bool hideMaker) {
        events.push_back((hideMaker ? "play alone " : "play ") + url.text());
    };
    // The extension decides, not the scheme. Movies on other computers go to the converter, which rejects
    // them.
    routeOpenedURLs(
        {URL::forFile("/a.mov"), URL::parse("file://localhost/b.ZEB").value(),
         URL::parse("zebmaker://play?url=c.zeb").value(), URL::parse("file://otherhost/d.zeb").value()},
        mainActor, openPlayer, router, [&] { events.emplace_back("activate"); });
    EXPECT_THAT(events, testing::IsEmpty());
    EXPECT_EQ(mainActor.waiting(), 4u);
    mainActor.run();
    EXPECT_THAT(events, ElementsAre("encode file:///a.mov", "activate", "play alone file://localhost/b.ZEB",
                                    "encode zebmaker://play?url=c.zeb", "activate",
                                    "encode file://otherhost/d.zeb", "activate", "later", "later", "later"));
    EXPECT_EQ(router.request()->action,
              AppAction(EncodeAction{URL::parse("file://otherhost/d.zeb").value()}));
}

constexpr std::int64_t now = 1'700'000'000;
constexpr std::int64_t day = 86'400;

class SharedInboxTest : public testing::Test {
protected:
    SharedInboxTest() { fs::create_directory(place("SharedInbox")); }

    fs::path place(const std::string& name) const { return m_container.file(name); }

    /// Sets the date of an entry to now plus the given seconds and nanoseconds. Does not follow links.
    void date(const std::string& name, std::int64_t seconds, long nanoseconds = 0) const {
        const timespec time{static_cast<time_t>(now + seconds), nanoseconds};
        const timespec times[] = {time, time};
        ASSERT_EQ(::utimensat(AT_FDCWD, place(name).c_str(), times, AT_SYMLINK_NOFOLLOW), 0) << name;
    }
    void file(const std::string& name, std::int64_t seconds, long nanoseconds = 0) const {
        std::ofstream(place(name)) << "bytes";
        date(name, seconds, nanoseconds);
    }
    void clean() const {
        cleanSharedInbox(m_container.path(),
                         std::chrono::system_clock::time_point(std::chrono::seconds(now)));
    }
    std::vector<std::string> names(const std::string& folder) const {
        std::vector<std::string> names;
        for (const auto& entry : fs::directory_iterator(place(folder)))
            names.push_back(entry.path().filename().string());
        return names;
    }

    test::TemporaryFolder m_container;
};

TEST_F(SharedInboxTest, RemovesEntriesOlderThanSevenDays) {
    file("SharedInbox/eight days", -8 * day);
    file("SharedInbox/to the second", -7 * day);
    file("SharedInbox/a moment older", -7 * day - 1, 999'999'999);
    file("SharedInbox/far future", 300 * 365 * day);
    file("SharedInbox/far past", -100 * 365 * day);
    file("SharedInbox/.hidden", -8 * day);
    clean();
    EXPECT_THAT(names("SharedInbox"), UnorderedElementsAre("to the second", "far future", ".hidden"));
}

TEST_F(SharedInboxTest, JudgesFoldersAndLinksByOwnDate) {
    fs::create_directory(place("outside"));
    file("outside/precious", -8 * day);
    fs::create_directories(place("SharedInbox/old/a/b/.c"));
    fs::create_directories(place("SharedInbox/new/a"));
    file("SharedInbox/old/a/b/new", 0);
    file("SharedInbox/new/a/old", -8 * day);
    ASSERT_EQ(::mkfifo(place("SharedInbox/old/a/pipe").c_str(), 0600), 0);
    for (const char* link : {"old link", "new link", "old/link"})
        fs::create_directory_symlink(place("outside"), place("SharedInbox") / link);
    fs::create_symlink(place("outside/precious"), place("SharedInbox/file link"));
    fs::create_symlink(place("nothing"), place("SharedInbox/dangling"));
    for (const char* name : {"old", "old link", "file link", "dangling"})
        date(std::string("SharedInbox/") + name, -8 * day);
    for (const char* name : {"new", "new link"})
        date(std::string("SharedInbox/") + name, -6 * day);
    clean();
    EXPECT_THAT(names("SharedInbox"), UnorderedElementsAre("new", "new link"));
    EXPECT_THAT(names("SharedInbox/new/a"), UnorderedElementsAre("old"));
    EXPECT_THAT(names("outside"), UnorderedElementsAre("precious"));
}

TEST_F(SharedInboxTest, IgnoresMissingOrLinkedInbox) {
    fs::rename(place("SharedInbox"), place("elsewhere"));
    file("elsewhere/precious", -8 * day);
    clean();
    EXPECT_FALSE(fs::exists(place("SharedInbox")));
    fs::create_directory_symlink(place("elsewhere"), place("SharedInbox"));
    clean();
    cleanSharedInbox(std::nullopt, {});
    EXPECT_THAT(names("elsewhere"), UnorderedElementsAre("precious"));
}

}  // namespace
}  // namespace zeb
