#include "ui/AppActionRouter.h"

#include <gmock/gmock.h>

#include <vector>

namespace zeb {
namespace {

using testing::ElementsAre;

AppAction encode(const std::string& path) {
    return EncodeAction{URL::forFile(path)};
}

TEST(AppActionRouter, TellsEveryObserverOfEveryRequestInOrder) {
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

}  // namespace
}  // namespace zeb
