#include <gmock/gmock.h>

#include <limits>
#include <optional>
#include <vector>

#include "tests/doubles/HandDrivenMainActor.h"
#include "ui/feedback/DockProgressController.h"

namespace zeb {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::SizeIs;

const QColor accent(0, 120, 215);

QImage drawn(double progress, double ratio, int size = 128) {
    DockProgressView view(size, {}, accent);
    view.setProgress(progress);
    return view.draw(ratio);
}

TEST(DockProgressViewTest, FillsBarByProgress) {
    const QImage image = drawn(0.5, 2);
    EXPECT_EQ(image.width(), 256);
    EXPECT_EQ(image.pixelColor(40, 216), accent);
    EXPECT_EQ(image.pixelColor(120, 216), accent);
    EXPECT_NE(image.pixelColor(140, 216), accent);
    const QImage narrow = drawn(0.5, 1, 28);
    EXPECT_EQ(narrow.pixelColor(14, 8), QColor(Qt::transparent)) << "there is no room for a bar";
}

class RecordingTile final : public DockTile {
public:
    double devicePixelRatio() const override { return 2; }
    void show(const QImage& picture, double progress) override {
        pictures.push_back(picture);
        shown.push_back(progress);
    }
    void clear() override { shown.push_back(-1); }

    std::vector<QImage> pictures;
    std::vector<double> shown;  ///< -1: cleared
};

class DockProgressControllerTest : public testing::Test {
protected:
    RecordingTile m_tile;
    fake::HandDrivenMainActor m_mainActor;
    std::optional<DockProgressController> m_controller{
        std::in_place, DockProgressController::Services{m_tile, m_mainActor, [] { return accent; }},
        QImage()};
};

TEST_F(DockProgressControllerTest, ClampsProgressAndDrawsIt) {
    const double nothing = std::numeric_limits<double>::quiet_NaN();
    for (const double progress : {-0.5, 2.0, 0.5, nothing}) {
        m_controller->update(progress);
        m_mainActor.pass(100ms);
    }
    EXPECT_THAT(m_tile.shown, ElementsAre(0, 1, 0.5, 0));
    EXPECT_EQ(m_tile.pictures[1], drawn(1, 2));
    EXPECT_EQ(m_tile.pictures[2], drawn(0.5, 2));
}

TEST_F(DockProgressControllerTest, LimitsRedrawsToTenPerSecond) {
    for (int i = 0; i < 1000; ++i) {
        m_controller->update(i / 1000.0);
        m_mainActor.pass(1ms);
    }
    EXPECT_THAT(m_tile.shown, SizeIs(testing::AllOf(testing::Ge(9U), testing::Le(11U))));
    m_controller->update(1);
    m_mainActor.pass(1s);
    EXPECT_EQ(m_tile.shown.back(), 1);
    EXPECT_LE(m_tile.shown.size(), 12U);
}

TEST_F(DockProgressControllerTest, ClearsAtOnceAndStaysClear) {
    m_controller->clear();
    m_controller->update(0.5);
    m_controller->update(0.6);
    m_controller->clear();
    m_mainActor.pass(1s);
    EXPECT_THAT(m_tile.shown, ElementsAre(0.5, -1));
    // The next run is shown again. The controller may be destroyed before its next drawing.
    m_controller->update(0);
    m_controller->update(0.1);
    m_controller.reset();
    m_mainActor.pass(1s);
    EXPECT_THAT(m_tile.shown, ElementsAre(0.5, -1, 0));
}

}  // namespace
}  // namespace zeb
