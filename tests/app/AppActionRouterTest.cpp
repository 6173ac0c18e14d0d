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

}  // namespace
}  // namespace zeb
