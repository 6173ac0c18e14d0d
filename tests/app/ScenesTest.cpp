#include "app/scenes/Scenes.h"

#include <gtest/gtest.h>

#include <QtQml/qqmlextensionplugin.h>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickStyle>
#include <QTest>
#include <optional>

#include "tests/conversion/model/ConverterTest.h"
#include "tests/platform/OffscreenApplication.h"
#include "ui/presets/PresetEditor.h"

Q_IMPORT_QML_PLUGIN(ZEBStylePlugin)
Q_IMPORT_QML_PLUGIN(ZEBMakerPlugin)
Q_IMPORT_QML_PLUGIN(ZEBMakerScenesPlugin)

namespace zeb {
namespace {

class QuietDock final : public DockProgress {
public:
    void update(double) override {}
    void clear() override {}
};

/// The application's windows on the offscreen platform, with a converter that the test drives by hand.
class ScenesTest : public test::ConverterTest {
protected:
    static void SetUpTestSuite() {
        ::qputenv("QT_QUICK_BACKEND", "software");
        test::needApplication();
        QGuiApplication::setQuitOnLastWindowClosed(false);
        QQuickStyle::setStyle("ZEBStyle");
        QQuickStyle::setFallbackStyle("Fusion");
    }

    ScenesTest() {
        engine.addImportPath("qrc:/qt/qml");
        fake::FakeFilm film;
        film.videoTracks = {{{64, 64}, {}, 1}};
        film.duration = 10;
        films.add(input, film);
        scenes.emplace(Scenes::Services{engine, content, defaults, notifications, [] {}});
        scenes->makeConverterWindow();  // without the splash view
        scenes->showConverter();
        takeFilm(input);
    }
    ~ScenesTest() override { scenes.reset(); }

    QQuickWindow* converter() const { return window("converter"); }
    static QQuickWindow* window(const QString& name) {
        for (QWindow* window : QGuiApplication::topLevelWindows()) {
            if (window->objectName() == name) return qobject_cast<QQuickWindow*>(window);
        }
        return nullptr;
    }

    const std::string input = folder.file("holiday.mov");
    QuietDock dock;
    AppActionRouter requests;
    QQmlEngine engine;
    ContentViewModel content{{*model, defaults, notifications, mainActor, clock, films, tasks, panels, sounds,
                              dock, requests, [](const URL&, bool) {}, [] {}, "1", ""}};
    std::optional<Scenes> scenes;
};

TEST_F(ScenesTest, AsksBeforeQuittingDuringRun) {
    struct Case {
        const char* what;
        bool isHidden;
        std::function<void()> act;
        bool isAsking;
    };
    const Case cases[] = {
        {"quit", false, [this] { scenes->quit(); }, true},
        {"quit from a player", true, [this] { scenes->quit(); }, true},
        {"close the converter", false, [this] { converter()->close(); }, true},
        {"close the last player", true, [this] { scenes->lastWindowClosed(); }, false},
    };
    for (const Case& it : cases) {
        SCOPED_TRACE(it.what);
        converter()->setVisible(!it.isHidden);
        model->start();
        ASSERT_TRUE(model->isRunning());
        it.act();
        ASSERT_TRUE(converter());
        EXPECT_TRUE(converter()->isVisible());
        EXPECT_EQ(scenes->isAskingToQuit(), it.isAsking);
        EXPECT_TRUE(model->isRunning());
        settle();
        EXPECT_FALSE(model->isRunning());
        EXPECT_FALSE(scenes->isAskingToQuit()) << "there is nothing left to stop";
    }
    EXPECT_TRUE(scenes->mayCloseConverter());
}

TEST_F(ScenesTest, KeyboardReachesEveryPresetInMenu) {
    PresetEditor editor(defaults, notifications);
    for (int index = 1; index <= 30; ++index)
        editor.addUserPreset("Tom & J " + std::to_string(index), 640 + 8 * index, 480);
    content.appear();
    QQuickWindow& window = *converter();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));

    // Keyboard only, with the mouse resting over the menu.
    QTest::mouseMove(&window, {130, 200});
    QTest::keyClick(&window, Qt::Key_P, Qt::AltModifier);
    auto* menu = window.findChild<QObject*>("presetsMenu");
    ASSERT_TRUE(menu);
    ASSERT_TRUE(QTest::qWaitFor([&] { return menu->property("opened").toBool(); }));
    auto* list = menu->property("contentItem").value<QQuickItem*>();
    EXPECT_LE(list->mapToScene({0, list->height()}).y(), window.height());
    EXPECT_TRUE(QTest::qWaitFor([&] { return list->property("contentHeight").toDouble() > list->height(); }));
    for (int entry = 0; entry < 40; ++entry)
        QTest::keyClick(&window, Qt::Key_Down);
    QTest::keyClick(&window, Qt::Key_Up);  // back from "Edit Presets"
    EXPECT_TRUE(QTest::qWaitFor([&] { return list->property("contentY").toDouble() > 0; }));
    QTest::keyClick(&window, Qt::Key_Return);
    EXPECT_EQ(model->settings()->width(), 640 + 8 * 30);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !menu->property("visible").toBool(); }));
}

TEST_F(ScenesTest, KeysOpenTheMenus) {
    QQuickWindow& window = *converter();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
    window.requestActivate();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    auto* menu = window.findChild<QObject*>("fileMenu");
    ASSERT_TRUE(menu);
    const auto isOpen = [menu](bool expected) {
        return QTest::qWaitFor([&] { return menu->property("visible").toBool() == expected; });
    };
    const std::function<void()> openings[] = {
        [&] { QTest::keyClick(&window, Qt::Key_F10); },
        [&] { QTest::keyClick(&window, Qt::Key_Alt); },
        [&] { QTest::keyClick(&window, Qt::Key_F, Qt::AltModifier); },
    };
    for (const auto& open : openings) {
        open();
        EXPECT_TRUE(isOpen(true));
        QTest::keyClick(&window, Qt::Key_Escape);
        EXPECT_TRUE(isOpen(false));
    }
    // Alt together with another key does not open a menu.
    QTest::keyPress(&window, Qt::Key_Alt);
    QTest::keyClick(&window, Qt::Key_Tab, Qt::AltModifier);
    QTest::keyRelease(&window, Qt::Key_Alt);
    EXPECT_FALSE(menu->property("visible").toBool());

    // In an open menu, the letter of an entry selects it.
    QTest::keyClick(&window, Qt::Key_H, Qt::AltModifier);
    QTest::keyClick(&window, Qt::Key_H);
    EXPECT_TRUE(QTest::qWaitFor([] { return ScenesTest::window("zebmaker-help") != nullptr; }));
}

}  // namespace
}  // namespace zeb
