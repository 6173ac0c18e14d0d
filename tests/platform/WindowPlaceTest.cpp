#include "platform/desktop/Windows.h"

#include <gtest/gtest.h>

#include <QScreen>

#include "tests/platform/OffscreenApplication.h"

namespace zeb {
namespace {

TEST(WindowPlaceTest, LeavesRoomForFrameOnEveryScreen) {
    struct Case {
        const char* what;
        QRect available;
        QSize wanted;
        QSize size;
    };
    const Case cases[] = {
        {"large", {0, 0, 1400, 1000}, {970, 695}, {970, 695}},
        {"low", {0, 0, 1024, 600}, {970, 695}, {970, 552}},
        {"small", {0, 0, 800, 600}, {970, 695}, {784, 552}},
        {"doubled", {0, 0, 700, 500}, {970, 695}, {684, 452}},
        {"beside a panel, on the second screen", {1920, 30, 1024, 570}, {780, 720}, {780, 522}},
    };
    for (const Case& it : cases) {
        SCOPED_TRACE(it.what);
        const QRect place = placedContents(it.available, it.wanted);
        EXPECT_EQ(place.size(), it.size);
        // A title bar of 38 and borders of 6 pixels are also inside the screen.
        EXPECT_TRUE(it.available.contains(place.marginsAdded({6, 38, 6, 6})));
        EXPECT_LE(std::abs(place.center().x() - it.available.center().x()), 1);
    }
}

TEST(WindowPlaceTest, ScreenSizeLimitsMinimumSize) {
    test::needApplication();
    QWindow window;
    const QSize room = roomForContents(window.screen()->availableGeometry()).size();
    window.setMinimumSize({200, room.height() + 100});
    window.resize(room + QSize(500, 500));
    placeOnScreen(window);
    EXPECT_EQ(window.size(), room);
    EXPECT_EQ(window.minimumSize(), QSize(200, room.height()));
}

}  // namespace
}  // namespace zeb
