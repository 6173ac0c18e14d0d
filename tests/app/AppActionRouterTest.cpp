#include "ui/AppActionRouter.h"

#include <gmock/gmock.h>

#include <thread>
#include <vector>

namespace zeb {
namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

AppAction encode(const std::string& path) {
    return EncodeAction{URL::forFile(path)};
}

TEST(AppActionRouter, KeepsTheLatestRequestUnderAFreshId) {
    AppActionRouter router;
    EXPECT_EQ(router.request(), std::nullopt);
    router.post(encode("/a"));
    const AppActionRequest first = router.request().value();
    EXPECT_EQ(first.action, encode("/a"));
    EXPECT_THAT(first.id,
                MatchesRegex("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}"));
    router.post(encode("/a"));
    EXPECT_EQ(router.request()->action, first.action);
    EXPECT_NE(router.request(), first);
}

TEST(AppActionRouter, TellsEveryObserverOfEveryRequestInOrder) {
    AppActionRouter router;
    router.post(encode("/before"));
    std::vector<AppAction> first, second;
    auto ending = router.observe([&](const AppActionRequest& request) {
        first.push_back(request.action);
        if (first.size() == 1) {
            router.post(encode("/b"));
            router.post(encode("/c"));
            EXPECT_EQ(router.request()->action, encode("/c"));
        }
    });
    const auto staying =
        router.observe([&](const AppActionRequest& request) { second.push_back(request.action); });
    router.post(encode("/a"));
    EXPECT_THAT(first, ElementsAre(encode("/a"), encode("/b"), encode("/c")));
    EXPECT_EQ(second, first);

    ending = {};
    router.post(encode("/d"));
    EXPECT_EQ(first.size(), 3u);
    EXPECT_EQ(second.back(), encode("/d"));
}

TEST(AppActionRouter, IsOneForTheProcess) {
    std::vector<AppActionRouter*> seen(8);
    {
        std::vector<std::jthread> threads;
        threads.reserve(seen.size());
        for (AppActionRouter*& router : seen)
            threads.emplace_back([&router] { router = &AppActionRouter::shared(); });
    }
    EXPECT_THAT(seen, testing::Each(&AppActionRouter::shared()));
}

}  // namespace
}  // namespace zeb
