#include <gmock/gmock.h>

#include <QtQml/qqmlextensionplugin.h>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QQuickWindow>
#include <QScreen>
#include <QTest>
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "codec/PixelBytes.h"
#include "codec/SpriteEncoder.h"
#include "format/ZEBWriter.h"
#include "platform/desktop/QtMainActor.h"
#include "platform/tasks/Clock.h"
#include "platform/tasks/ThreadTasks.h"
#include "player/window/FrameItem.h"
#include "player/window/PlayerSheetModel.h"
#include "player/window/ZEBPlayerWindowManager.h"
#include "tests/doubles/FakeMedia.h"
#include "tests/doubles/FakeUserDefaults.h"
#include "tests/platform/OffscreenApplication.h"
#include "tests/platform/TemporaryFolder.h"
#include "tests/player/RecordingOutput.h"

Q_IMPORT_QML_PLUGIN(ZEBStylePlugin)
Q_IMPORT_QML_PLUGIN(ZEBPlayerPlugin)

namespace zeb {
namespace {

void failOnWarning(QtMsgType type, const QMessageLogContext&, const QString& text) {
    // Offscreen windows cannot be raised.
    if (text == "This plugin does not support raise()") return;
    if (type == QtWarningMsg || type == QtCriticalMsg) ADD_FAILURE() << text.toStdString();
}

void writeMovie(const std::string& path) {
    ZEBWriter writer(path, {"Stripes", 384, 200, 20, 32, 40, 2, 0, false});
    // Two pictures in turn.
    SpriteEncoder encoder;
    const std::vector<std::uint8_t> even = encoder.encodeMode32Sprite(fake::FakePicture(1), 384, 200);
    const std::vector<std::uint8_t> odd = encoder.encodeMode32Sprite(fake::FakePicture(2), 384, 200);
    std::vector<std::span<const std::uint8_t>> frames;
    for (int frame = 0; frame < 20; ++frame)
        frames.emplace_back(frame % 2 == 0 ? even : odd);
    writer.writeSecond({}, frames);
    writer.writeSecond({}, frames);
    writer.finish();
    writer.close();
}

/// Real player windows on the offscreen platform, driven by key and mouse events.
class PlayerWindowTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        ::qputenv("QT_QUICK_BACKEND", "software");
        test::needApplication();
        QGuiApplication::setQuitOnLastWindowClosed(false);
        QQuickStyle::setStyle("ZEBStyle");
        QQuickStyle::setFallbackStyle("Fusion");
    }
    PlayerWindowTest() {
        qInstallMessageHandler(failOnWarning);
        engine.addImportPath("qrc:/qt/qml");
        writeMovie(movie);
    }
    ~PlayerWindowTest() override { qInstallMessageHandler(nullptr); }

    QQuickWindow* open(const std::string& path, bool hideMaker = false) {
        windows.openPlayer(URL::forFile(path), hideMaker);
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (window->isVisible() && window->title() == "movie" && QTest::qWaitForWindowExposed(window))
                return qobject_cast<QQuickWindow*>(window);
        }
        return nullptr;
    }
    static PlayerSheetModel& sheetOf(QQuickWindow* window) {
        return *window->property("sheetModel").value<PlayerSheetModel*>();
    }
    static QQuickItem* item(QQuickWindow* window, const char* name) {
        return window->findChild<QQuickItem*>(name);
    }
    static void click(QQuickWindow* window, const char* name) {
        const QQuickItem* control = item(window, name);
        const QPointF middle(control->width() / 2, control->height() / 2);
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, control->mapToScene(middle).toPoint());
    }

    std::function<void()> note(const char* what) {
        return [this, what] { called.emplace_back(what); };
    }

    test::TemporaryFolder folder;
    const std::string movie = folder.file("movie.zeb");
    NotificationCenter notifications;
    fake::FakeUserDefaults defaults{notifications};
    QtMainActor mainActor;
    SystemClock clock;
    test::RecordingOutput output;
    ThreadTasks tasks;
    QQmlEngine engine;
    QQuickWindow maker;
    ZEBPlayerWindowManager windows{
        {engine, {makeFileMovieReader, output, mainActor, tasks, clock}, defaults, notifications, {}}};
    /// A sheet without a window, and the commands that it has called.
    std::vector<std::string> called;
    PlayerSheetModel sheet{movie,
                           {makeFileMovieReader, output, mainActor, tasks, clock},
                           defaults,
                           notifications,
                           {note("close"),
                            note("maker"),
                            {note("choose"), note("play"), note("settings"), note("help"),
                             [this](const URL& url) { called.push_back(url.text()); }}}};
};

TEST_F(PlayerWindowTest, ReusesOneWindowPerMovie) {
    maker.show();
    QQuickWindow* window = open(movie);
    ASSERT_TRUE(window);
    EXPECT_TRUE(maker.isVisible());
    ZEBPlayerModel& model = *sheetOf(window).model();
    click(window, "end");
    EXPECT_EQ(model.displayedFrameIndex(), 39);
    EXPECT_FALSE(item(window, "stepForward")->isEnabled());
    click(window, "stepBack");
    EXPECT_EQ(open(folder.file("./movie.zeb"), true), window);
    EXPECT_EQ(model.displayedFrameIndex(), 38) << "it is not opened again";
    EXPECT_FALSE(maker.isVisible());
    EXPECT_TRUE(window->isVisible());
    click(window, "openMaker");
    EXPECT_TRUE(maker.isVisible());

    click(window, "stop");
    click(window, "play");
    EXPECT_TRUE(model.isPlaying());
    while (model.displayedFrameIndex() < 3)
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    click(window, "close");
    EXPECT_EQ(windows.windowCount(), 0U);
}

TEST_F(PlayerWindowTest, ReopensMovieThatHasChanged) {
    QQuickWindow* window = open(movie);
    ASSERT_TRUE(window);
    PlayerSheetModel& shown = sheetOf(window);
    const auto time = std::filesystem::last_write_time(movie);
    const struct {
        const char* change;
        bool isOpenedAgain;
        std::function<void()> make;
    } cases[] = {
        {"nothing", false, [] {}},
        {"the time", true, [&] { std::filesystem::last_write_time(movie, time + std::chrono::seconds(1)); }},
        {"the size", true,
         [&] {
             const auto before = std::filesystem::last_write_time(movie);
             std::ofstream(movie, std::ios::app) << "more";
             std::filesystem::last_write_time(movie, before);
         }},
        {"another file of the same size and time", true,
         [&] {
             std::filesystem::copy_file(movie, folder.file("other"));
             std::filesystem::last_write_time(folder.file("other"), std::filesystem::last_write_time(movie));
             std::filesystem::rename(folder.file("other"), movie);
         }},
        {"reloaded since", false,
         [&] {
             std::filesystem::last_write_time(movie, time);
             shown.appear();
             shown.toEnd();
         }},
        {"its absence", true, [&] { std::filesystem::remove(movie); }},
    };
    for (const auto& [change, isOpenedAgain, make] : cases) {
        shown.toEnd();
        make();
        EXPECT_EQ(open(movie), window) << change;
        EXPECT_EQ(shown.model()->displayedFrameIndex(), isOpenedAgain ? 0 : 39) << change;
    }
    EXPECT_EQ(windows.windowCount(), 1U);
}

TEST_F(PlayerWindowTest, WindowsDoNotCoverEachOther) {
    // The windows are as wide as the screen, so they can move up and down only, and start again in the
    // middle.
    for (int number = 0; number < 6; ++number) {
        const std::string path = folder.file(std::to_string(number)) + "/movie.zeb";
        std::filesystem::create_directory(folder.file(std::to_string(number)));
        writeMovie(path);
        windows.openPlayer(URL::forFile(path), false);
    }
    std::vector<QRect> places;
    for (const QWindow* window : QGuiApplication::topLevelWindows()) {
        if (window->isVisible() && window->title() == "movie") places.push_back(window->geometry());
    }
    EXPECT_EQ(places.size(), 6U);
    for (const QRect& place : places) {
        EXPECT_EQ(std::count(places.begin(), places.end(), place), 1);
        EXPECT_LE(place.bottom(), maker.screen()->availableGeometry().bottom());
    }
}

TEST_F(PlayerWindowTest, TimeAndCounterFollowTheSlider) {
    sheet.appear();
    sheet.setScrubbing(true);
    for (const auto& [frame, text] :
         {std::pair(0.0, "0:00 / 0:02, 1/40"), {20.9, "0:01 / 0:02, 21/40"}, {39.0, "0:01 / 0:02, 40/40"}}) {
        sheet.scrubTo(frame);
        EXPECT_EQ((sheet.timeText() + ", " + sheet.counterText()).toStdString(), text);
        EXPECT_EQ(sheet.model()->displayedFrameIndex(), 0);
    }
    sheet.setScrubbing(false);
    EXPECT_EQ(sheet.model()->displayedFrameIndex(), 39);
}

TEST_F(PlayerWindowTest, KeysMoveThroughTheMovie) {
    bool isEnabled = false;  // the slider, as the window was told last
    QObject::connect(&sheet, &PlayerSheetModel::positionChanged, [&] { isEnabled = sheet.sliderEnabled(); });
    EXPECT_TRUE(sheet.handleKey(Qt::Key_R, Qt::NoModifier)) << "opens it";
    EXPECT_TRUE(isEnabled);
    EXPECT_EQ(sheet.counterText(), "1/40");
    const PixelBytes even = sheet.model()->image()->pixels;
    const struct {
        int key, modifiers, frame;
    } keys[] = {{Qt::Key_Left, 0, 0},
                {Qt::Key_Right, 0, 1},
                {Qt::Key_Period, Qt::KeypadModifier, 2},
                {Qt::Key_Left, Qt::ShiftModifier, 1},
                {Qt::Key_End, 0, 39},
                {Qt::Key_Right, 0, 39},
                {Qt::Key_Comma, 0, 38},
                {Qt::Key_Home, 0, 0},
                {Qt::Key_End, 0, 39},
                {Qt::Key_R, 0, 0}};
    for (const auto& [key, modifiers, frame] : keys) {
        EXPECT_FALSE(sheet.handleKey(key, modifiers | Qt::ControlModifier));
        EXPECT_TRUE(sheet.handleKey(key, modifiers));
        EXPECT_EQ(sheet.model()->displayedFrameIndex(), frame) << key;
        EXPECT_EQ(sheet.model()->image()->pixels == even, frame % 2 == 0) << key;
    }
    EXPECT_FALSE(sheet.handleKey(Qt::Key_A, 0));
    EXPECT_FALSE(sheet.handleKey(Qt::Key_Space, Qt::ShiftModifier));
    EXPECT_TRUE(sheet.handleKey(Qt::Key_Space, 0));
    EXPECT_TRUE(sheet.model()->isPlaying());
    sheet.stop();
    EXPECT_FALSE(sheet.model()->isPlaying());
    sheet.disappear();
    EXPECT_FALSE(isEnabled);
    EXPECT_EQ(sheet.model()->totalFrames(), 0);
    sheet.playOrPause();
    EXPECT_FALSE(sheet.model()->isPlaying()) << "there is nothing to play";

    sheet.close();
    sheet.openMaker();
    sheet.chooseVideo();
    sheet.playMovie();
    sheet.showSettings();
    sheet.showHelp();
    const QList<QUrl> dropped{QUrl("file:///a.zeb"), QUrl("file:///a.mov"), QUrl("file:///b.zeb")};
    EXPECT_TRUE(sheet.takesURLs(dropped));
    EXPECT_FALSE(sheet.takesURLs({dropped[1]}));
    sheet.takeDroppedURLs(dropped);
    EXPECT_THAT(called, testing::ElementsAre("close", "maker", "choose", "play", "settings", "help",
                                             "file:///a.zeb", "file:///b.zeb"));
    EXPECT_EQ(oneLine("a\nb\u2029c"), "a b c");

    QWindow window;
    window.setWindowStates(Qt::WindowMaximized);
    sheet.toggleFullScreen(&window);
    EXPECT_EQ(window.windowStates(), Qt::WindowMaximized | Qt::WindowFullScreen);
    sheet.toggleFullScreen(&window);
    EXPECT_EQ(window.windowStates(), Qt::WindowMaximized);
}

TEST_F(PlayerWindowTest, LoopAndColoursApplyToAllWindows) {
    std::vector<int> readings;
    std::vector<bool> loops;
    QObject::connect(&sheet, &PlayerSheetModel::storedMode32Changed,
                     [&] { readings.push_back(sheet.storedMode32()); });
    QObject::connect(&sheet, &PlayerSheetModel::storedLoopChanged,
                     [&] { loops.push_back(sheet.storedLoop()); });
    EXPECT_TRUE(sheet.storedLoop()) << "unless something else was chosen";
    const int usual = sheet.storedMode32(), last = static_cast<int>(sheet.mode32Labels().size()) - 1;
    for (const int wrong : {-1, last + 1})
        sheet.setStoredMode32(wrong);
    EXPECT_TRUE(readings.empty());
    for (const int reading : {0, last}) {
        sheet.setStoredMode32(reading);
        EXPECT_EQ(sheet.storedMode32(), reading);
        EXPECT_EQ(readings.back(), reading);
    }
    EXPECT_TRUE(sheet.handleKey(Qt::Key_L, 0));
    EXPECT_FALSE(loops.back() || sheet.storedLoop());
    EXPECT_TRUE(sheet.handleKey(Qt::Key_L, 0));
    EXPECT_TRUE(loops.back() && sheet.storedLoop());
    defaults.set(PlayerSheetModel::mode32Key, std::string("nonsense"));
    EXPECT_EQ(sheet.storedMode32(), usual);
}

TEST_F(PlayerWindowTest, FrameFillsTheAvailableSpace) {
    const struct {
        QSizeF frame, area;
        double ratio;
        QRectF place;
    } cases[] = {
        {{100, 50}, {100, 50}, 1, {0, 0, 100, 50}},
        {{100, 50}, {250, 250}, 1, {0, 62, 250, 125}},
        {{100, 50}, {201, 101}, 1, {0, 0, 200, 100}},      // twice the size, tolerating one pixel
        {{100, 50}, {199.5, 120}, 1, {-1, 10, 200, 100}},  // twice the size, slightly larger than the area
        {{100, 50}, {202, 101}, 1, {0, 0, 202, 101}},      // beyond the tolerance of one pixel
        {{100, 50}, {60, 90}, 1, {0, 30, 60, 30}},
        {{100, 50}, {150.4, 90}, 2, {0, 7.5, 150, 75}},  // three device pixels per pixel
    };
    for (const auto& [frame, area, ratio, place] : cases)
        EXPECT_EQ(FrameItem::placeOf(frame, area, ratio), place)
            << testing::PrintToString(area.width()) << " " << testing::PrintToString(frame.width());
}

TEST_F(PlayerWindowTest, FrameIsDrawnPixelByPixel) {
    QQuickWindow window;
    window.setColor(Qt::white);
    window.resize(768, 420);
    auto* frame = new FrameItem(window.contentItem());
    frame->setSize(window.size());
    window.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    const auto isDrawn = [&] {
        const ZEBPlayerModel::Image& image = sheet.model()->image();
        const QImage grabbed = window.grabWindow();
        if (!image) return grabbed.pixel(400, 200) != qRgb(255, 255, 255);
        const QRectF area =
            FrameItem::placeOf(QSizeF(image->width, image->height), frame->size(), window.devicePixelRatio());
        const double scale = area.width() / image->width;
        for (int y = 0; y < image->height; ++y) {
            for (int x = 0; x < image->width; ++x) {
                const std::uint8_t* pixel =
                    &image->pixels[static_cast<std::size_t>(y * image->width + x) * 4];
                const QPointF middle = area.topLeft() + QPointF(x + 0.5, y + 0.5) * scale;
                const QPoint place(static_cast<int>(middle.x()), static_cast<int>(middle.y()));
                if (grabbed.pixel(place) != qRgb(pixel[2], pixel[1], pixel[0])) return false;
            }
        }
        return true;
    };
    int changes = 0;
    QObject::connect(frame, &FrameItem::playerChanged, [&] { ++changes; });
    EXPECT_FALSE(isDrawn());
    frame->setPlayer(sheet.model());
    frame->setPlayer(sheet.model());
    EXPECT_EQ(changes, 1);
    sheet.appear();
    EXPECT_TRUE(isDrawn());
    frame->setSize({384, 300});
    EXPECT_TRUE(isDrawn());
    // Another player replaces the picture. No player clears it.
    PlayerSheetModel other(movie, {makeFileMovieReader, output, mainActor, tasks, clock}, defaults,
                           notifications, {});
    frame->setPlayer(other.model());
    EXPECT_EQ(window.grabWindow().pixel(190, 150), qRgb(255, 255, 255));
    frame->setPlayer(nullptr);
    EXPECT_EQ(changes, 3);
}

}  // namespace
}  // namespace zeb
