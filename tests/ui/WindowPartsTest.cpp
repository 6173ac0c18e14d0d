#include <gmock/gmock.h>

#include <QImage>
#include <QImageReader>
#include <QPainter>
#include <cmath>
#include <string>
#include <vector>

#include "platform/files/StandardFolders.h"
#include "tests/doubles/FakeUserDefaults.h"
#include "tests/platform/OffscreenApplication.h"
#include "ui/presets/PresetSettingsModel.h"
#include "ui/window/AnimatedGIFView.h"

namespace zeb {
namespace {

using testing::ElementsAre;

class PresetSettingsTest : public testing::Test {
protected:
    std::vector<std::string> rows() const {
        std::vector<std::string> rows;
        for (int row = 0; row < model.count(); ++row) {
            const auto field = [&](int role) { return model.data(model.index(row), role); };
            rows.push_back(field(PresetSettingsModel::nameRole).toString().toStdString() + " " +
                           std::to_string(field(PresetSettingsModel::sideWidthRole).toInt()) + "x" +
                           std::to_string(field(PresetSettingsModel::sideHeightRole).toInt()));
        }
        return rows;
    }

    NotificationCenter notifications;
    fake::FakeUserDefaults defaults{notifications};
    PresetSettingsModel model{defaults, notifications};
};

TEST_F(PresetSettingsTest, ShowsAndChangesUserPresets) {
    std::vector<std::string> seen;
    QObject::connect(&model, &PresetSettingsModel::countChanged, [&] { seen.push_back("count"); });
    QObject::connect(&model, &PresetSettingsModel::modelReset, [&] { seen.push_back("reset"); });
    QObject::connect(&model, &PresetSettingsModel::dataChanged,
                     [&](const QModelIndex& first, const QModelIndex& last) {
                         EXPECT_EQ(first, last);
                         seen.push_back("row " + std::to_string(first.row()));
                     });
    model.addEmptyPreset();
    model.add4KPreset();
    EXPECT_THAT(rows(), ElementsAre("New preset 1280x720", "4K 3840x2160"));
    EXPECT_THAT(seen, ElementsAre("reset", "count", "reset", "count"));
    seen.clear();
    model.setName(1, "TV");
    model.setPresetWidth(0, 64);
    model.setPresetHeight(0, 72);
    for (const int row : {-1, 2}) {
        model.setName(row, "nowhere");
        model.removePreset(row);
    }
    EXPECT_THAT(rows(), ElementsAre("New preset 64x72", "TV 3840x2160"));
    EXPECT_THAT(seen, ElementsAre("row 1", "row 0", "row 0"));
    EXPECT_EQ(model.data({}, PresetSettingsModel::nameRole), QVariant());
    EXPECT_EQ(model.data(model.index(0), Qt::DisplayRole), QVariant());
    EXPECT_EQ(model.rowCount(model.index(0)), 0);
    // Values stored by another window are shown. Stored values outlive the window.
    PresetSettingsModel other(defaults, notifications);
    other.appear();
    EXPECT_EQ(other.count(), 2);
    other.removePreset(0);
    EXPECT_THAT(rows(), ElementsAre("TV 3840x2160"));
}

TEST_F(PresetSettingsTest, ShowsAndChangesBuiltInSizes) {
    int changes = 0;
    QObject::connect(&model, &PresetSettingsModel::settingsChanged, [&] { ++changes; });
    model.setBuiltInWidth(1, 640);
    model.setBuiltInHeight(2, 480);
    for (const int place : {-1, 3}) {
        model.setBuiltInWidth(place, 1);
        model.setBuiltInHeight(place, 1);
    }
    EXPECT_THAT(model.builtInWidths(), ElementsAre(720, 640, 1920));
    EXPECT_THAT(model.builtInHeights(), ElementsAre(576, 720, 480));
    EXPECT_EQ(changes, 2);
    EXPECT_TRUE(model.soundEffectsEnabled());
    model.setSoundEffectsEnabled(false);
    EXPECT_FALSE(model.soundEffectsEnabled());
    EXPECT_EQ(changes, 3);
}

class AnimatedGIFViewTest : public testing::Test {
protected:
    static void SetUpTestSuite() { test::needApplication(); }

    static QImage painted(AnimatedGIFView& view, double ratio = 1) {
        QImage image((view.size() * ratio).toSize(), QImage::Format_ARGB32_Premultiplied);
        image.setDevicePixelRatio(ratio);
        image.fill(Qt::transparent);
        QPainter painter(&image);
        view.paint(&painter);
        return image;
    }
};

TEST_F(AnimatedGIFViewTest, CastsSoftShadowBelowPicture) {
    AnimatedGIFView view;
    view.setSize({300, 260});
    for (const int ratio : {1, 2}) {
        const QImage image = painted(view, ratio);
        const auto alphaAt = [&](double x, double y) {
            return image.pixelColor(static_cast<int>(x * ratio), static_cast<int>(y * ratio)).alphaF();
        };
        // Even on both sides, and 12 points lower than the picture, whose margins are 45 points wide.
        EXPECT_EQ(alphaAt(0, 0), 0);
        for (int x = 0; x < 150; ++x)
            EXPECT_NEAR(alphaAt(x, 140), alphaAt(299.5 - x, 140), 0.01);
        for (const double y : {57.0, 227.0})
            EXPECT_NEAR(alphaAt(150, y), 0.35 / 2, 0.03) << "half at the shadow's own edge";
        EXPECT_GT(alphaAt(150, 140), 0.3);
        for (int y = 217; y < 259; ++y)
            EXPECT_LE(alphaAt(150, y + 1), alphaAt(150, y));
        EXPECT_LT(alphaAt(150, 257), 0.02);
    }
    view.setSize({80, 260});
    EXPECT_EQ(painted(view), [] {
        QImage empty(80, 260, QImage::Format_ARGB32_Premultiplied);
        empty.fill(Qt::transparent);
        return empty;
    }()) << "there is no room for a picture";
}

TEST_F(AnimatedGIFViewTest, KeepsProportionsOfPicture) {
    AnimatedGIFView view;
    int changes = 0;
    QObject::connect(&view, &AnimatedGIFView::resourceChanged, [&] { ++changes; });
    view.setSize({600, 190});
    view.setResourceName("QLANI");
    view.setFileExtension("GIF");
    view.setFileExtension("GIF");
    EXPECT_EQ(changes, 2);
    const QImage frame = QImageReader(QString::fromStdString(*resourcePath("artwork/QLANI", "GIF"))).read();
    ASSERT_FALSE(frame.isNull());
    const double width = 100.0 * frame.width() / frame.height();
    const QImage image = painted(view);
    int alike = 0;
    for (int part = 1; part < 20; ++part) {  // along the diagonal
        const QColor shown =
            image.pixelColor(static_cast<int>(300 + width * (part / 20.0 - 0.5)), 45 + 5 * part);
        const QColor stored = frame.pixelColor(frame.width() * part / 20, frame.height() * part / 20);
        alike += std::abs(shown.red() - stored.red()) + std::abs(shown.green() - stored.green()) +
                     std::abs(shown.blue() - stored.blue()) <
                 60;
        EXPECT_EQ(shown.alpha(), 255);
    }
    EXPECT_GT(alike, 13);
    EXPECT_LT(image.pixelColor(static_cast<int>(300 - width / 2 - 3), 95).alpha(), 128) << "beside it";
    EXPECT_LT(image.pixelColor(static_cast<int>(300 - width / 2 + 0.5), 45).alpha(), 128)
        << "its corner is round";
    // Without a resource name nothing is drawn.
    view.setResourceName("");
    EXPECT_LT(painted(view).pixelColor(300, 95).alpha(), 128);
}

}  // namespace
}  // namespace zeb
