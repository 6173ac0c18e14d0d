#include <gmock/gmock.h>

#include <QtQml/qqmlextensionplugin.h>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "codec/SpriteEncoder.h"
#include "format/ZEBWriter.h"
#include "platform/SystemClock.h"
#include "platform/ThreadTasks.h"
#include "platform/fake/FakeMedia.h"
#include "platform/fake/FakeUserDefaults.h"
#include "platform/qt/QtMainActor.h"
#include "player/window/FrameItem.h"
#include "player/window/PlayerSheetModel.h"
#include "player/window/ZEBPlayerWindowManager.h"
#include "tests/platform/TemporaryFolder.h"

Q_IMPORT_QML_PLUGIN(ZEBStylePlugin)
Q_IMPORT_QML_PLUGIN(ZEBPlayerPlugin)

namespace zeb {
namespace {

constexpr int movieWidth = 384;
constexpr int movieHeight = 200;
constexpr int framesPerSecond = 20;
constexpr int movieSeconds = 2;

/// A device that nobody hears.
class SilentOutput final : public AudioOutput {
public:
    void start(std::shared_ptr<AudioSource>, Finished) override {}
    void stop(const AudioSource&) override {}
};

void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& text) {
    // Windows on no screen cannot come to its front.
    if (text == "This plugin does not support raise()") return;
    if (type == QtWarningMsg || type == QtCriticalMsg) ADD_FAILURE() << text.toStdString();
}

void writeMovie(const std::string& path) {
    MovieParameters movie;
    movie.title = "Stripes";
    movie.width = movieWidth;
    movie.height = movieHeight;
    movie.fps = framesPerSecond;
    movie.qlMode = 32;
    movie.totalFrames = framesPerSecond * movieSeconds;
    movie.frameIndexCount = movieSeconds;
    ZEBWriter writer(path, movie);
    SpriteEncoder encoder;
    std::uint32_t seed = 0;
    for (int second = 0; second < movieSeconds; ++second) {
        std::vector<std::vector<std::uint8_t>> records;
        for (int frame = 0; frame < framesPerSecond; ++frame)
            records.push_back(encoder.encodeMode32Sprite(fake::FakePicture(++seed), movieWidth, movieHeight));
        const std::vector<std::span<const std::uint8_t>> spans(records.begin(), records.end());
        writer.writeSecond({}, spans);
    }
    writer.finish();
    writer.close();
}

/// Windows of the real kind on a screen that is none, driven by real keys and clicks.
class PlayerWindowTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        static int argc = 1;
        static char name[] = "test";
        static char* argv[] = {name, nullptr};
        qputenv("QT_QPA_PLATFORM", "offscreen");
        qputenv("QT_QUICK_BACKEND", "software");
        s_application = std::make_unique<QGuiApplication>(argc, argv);
        QGuiApplication::setQuitOnLastWindowClosed(false);
        QQuickStyle::setStyle("ZEBStyle");
        QQuickStyle::setFallbackStyle("Fusion");
    }
    // Not at the end of the process, when what it looks after may be gone.
    static void TearDownTestSuite() { s_application.reset(); }

    PlayerWindowTest() {
        qInstallMessageHandler(failOnWarning);
        engine.addImportPath("qrc:/qt/qml");
        writeMovie(movie);
    }
    ~PlayerWindowTest() override { qInstallMessageHandler(nullptr); }

    QQuickWindow* open(const std::string& path, bool hideMaker = false) {
        windows.openPlayer(URL::forFile(path), hideMaker);
        QQuickWindow* opened = nullptr;
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (window->isVisible() && window->title() == "movie")
                opened = qobject_cast<QQuickWindow*>(window);
        }
        if (opened && !QTest::qWaitForWindowExposed(opened)) opened = nullptr;
        return opened;
    }
    static PlayerSheetModel& sheetOf(QQuickWindow* window) {
        return *window->property("sheetModel").value<PlayerSheetModel*>();
    }
    static QQuickItem* item(QQuickWindow* window, const char* name) {
        return window->findChild<QQuickItem*>(name);
    }
    static QPoint middleOf(QQuickWindow* window, const char* name) {
        const QQuickItem* control = item(window, name);
        return control->mapToScene(QPointF(control->width() / 2, control->height() / 2)).toPoint();
    }
    static void click(QQuickWindow* window, const char* name) {
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, middleOf(window, name));
    }

    static inline std::unique_ptr<QGuiApplication> s_application;

    test::TemporaryFolder folder;
    const std::string movie = folder.file("movie.zeb");
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults{notifications};
    QtMainActor mainActor;
    SystemClock clock;
    SilentOutput output;
    ThreadTasks tasks;
    QQmlEngine engine;
    QQuickWindow maker;
    ZEBPlayerWindowManager windows{
        {engine, {makeFileMovieReader, output, mainActor, tasks, clock}, defaults, notifications, {}}};
};

TEST_F(PlayerWindowTest, PlacesFramesWholeAndOnPixels) {
    const struct {
        QSizeF area;
        double ratio;
        QRectF place;
    } cases[] = {
        {{640, 400}, 1, {0, 0, 640, 400}},   {{900, 450}, 1, {90, 0, 720, 450}},
        {{641, 400.5}, 1, {0, 0, 640, 400}},  // a whole multiple, within a pixel
        {{320.5, 200}, 2, {0, 0, 320, 200}}, {{100, 300}, 1, {0, 118, 100, 62.5}},
    };
    for (const auto& [area, ratio, place] : cases)
        EXPECT_EQ(FrameItem::placeOf(QSizeF(320, 200), area, ratio), place) << area.width();
}

TEST_F(PlayerWindowTest, MouseOnTheControls) {
    QQuickWindow* window = open(movie);
    ASSERT_TRUE(window);
    ZEBPlayerModel& model = *sheetOf(window).model();
    click(window, "stepForward");
    click(window, "stepForward");
    click(window, "stepBack");
    EXPECT_EQ(model.displayedFrameIndex(), 1);
    click(window, "end");
    EXPECT_EQ(model.displayedFrameIndex(), 39);
    EXPECT_FALSE(item(window, "stepForward")->isEnabled());
    click(window, "stop");
    EXPECT_EQ(model.displayedFrameIndex(), 0);
    EXPECT_FALSE(item(window, "beginning")->isEnabled());

    // A drag pauses, reads nothing, and jumps when it ends.
    click(window, "play");
    EXPECT_TRUE(model.isPlaying());
    const QQuickItem* slider = item(window, "slider");
    const QPointF middle(slider->width() / 2, slider->height() / 2);
    QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, slider->mapToScene(middle).toPoint());
    EXPECT_FALSE(model.isPlaying());
    const std::int64_t before = model.displayedFrameIndex();
    QTest::mouseMove(window, slider->mapToScene(middle + QPointF(20, 0)).toPoint());
    QTest::mouseMove(window, slider->mapToScene(middle + QPointF(40, 0)).toPoint());
    EXPECT_EQ(model.displayedFrameIndex(), before);
    QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier,
                        slider->mapToScene(middle + QPointF(40, 0)).toPoint());
    EXPECT_GT(model.displayedFrameIndex(), 19);
    EXPECT_LT(model.displayedFrameIndex(), 30);
    EXPECT_TRUE(model.isPlaying());
    click(window, "close");
    EXPECT_EQ(windows.windowCount(), 0U);
}

TEST_F(PlayerWindowTest, OneWindowForAMovieAndTheConverterHides) {
    maker.show();
    QQuickWindow* window = open(movie);
    ASSERT_TRUE(window);
    EXPECT_TRUE(maker.isVisible());
    QTest::keyClick(window, Qt::Key_Right);
    EXPECT_EQ(open(folder.file("../") + std::string(folder.path()).substr(folder.path().rfind('/') + 1) +
                       "/./movie.zeb",
                   true),
              window);
    EXPECT_EQ(sheetOf(window).model()->displayedFrameIndex(), 1) << "it is not opened again";
    EXPECT_FALSE(maker.isVisible());
    EXPECT_TRUE(window->isVisible());
    click(window, "openMaker");
    EXPECT_TRUE(maker.isVisible());

    // The reading of the pixels is shared by all windows, and kept.
    sheetOf(window).setStoredMode32(0);
    EXPECT_EQ(defaults.text("zeb.player.mode32"), "rgb565BE");
    EXPECT_EQ(sheetOf(window).model()->mode32(), Mode32Interpretation::rgb565BE);
}

}  // namespace
}  // namespace zeb
