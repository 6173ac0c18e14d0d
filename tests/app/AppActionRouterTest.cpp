#include "ui/model/AppActionRouter.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "app/Requests.h"
#include "tests/doubles/HandDrivenMainActor.h"

namespace zeb {
namespace {

using testing::ElementsAre;

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

}  // namespace
}  // namespace zeb
