#include <QtQml/qqmlextensionplugin.h>
#include <QApplication>
#include <QDir>
#include <QLibraryInfo>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QStandardPaths>
#include <QTranslator>
#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string_view>
#include <vector>

#include "app/AppDelegate.h"
#include "app/LaunchArguments.h"
#include "app/Requests.h"
#include "app/Services.h"
#include "app/Startup.h"
#include "platform/desktop/SingleInstance.h"
#include "platform/desktop/Windows.h"
#include "platform/desktop/style/ThemeColours.h"
#include "platform/files/StandardFolders.h"
#include "platform/text/LocalizedText.h"
#include "ui/feedback/DockProgressController.h"

Q_IMPORT_QML_PLUGIN(ZEBStylePlugin)
Q_IMPORT_QML_PLUGIN(ZEBPlayerPlugin)
Q_IMPORT_QML_PLUGIN(ZEBMakerPlugin)
Q_IMPORT_QML_PLUGIN(ZEBMakerScenesPlugin)

namespace {

constexpr int dockTileSize = 128;

/// Returns the folder for the lock and the socket of the running instance.
QString runtimeFolder() {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    QDir().mkpath(folder);
    return folder;
}

QIcon applicationIcon() {
    const auto path = zeb::resourcePath("artwork/zebmaker", "svg");
    return path ? QIcon(QString::fromStdString(*path)) : QIcon();
}

/// Loads the texts of Qt's standard dialogs in the language of our texts.
void translateDialogs(QTranslator& translator) {
    const QString language = QString::fromStdString(zeb::textLocale().language);
    if (translator.load("qtbase_" + language, QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&translator);
}

/// Returns whether there is a display for windows. Without one, Qt would abort the process. Help and version
/// need no display.
bool hasDisplay([[maybe_unused]] const std::vector<std::string_view>& arguments) {
#if defined(Q_OS_UNIX) && !defined(Q_OS_DARWIN)
    for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(variable)) return true;
    }
    const auto isGiven = [&](std::string_view word) { return std::ranges::count(arguments, word) > 0; };
    if (isGiven("-platform")) return true;
    if (!isGiven("--help") && !isGiven("-h") && !isGiven("--version") && !isGiven("-v")) return false;
    qputenv("QT_QPA_PLATFORM", "offscreen");
#endif
    return true;
}

}  // namespace

int main(int argc, char** argv) {
    // Exceeding the file size limit must be a write error instead of ending the process.
    std::signal(SIGXFSZ, SIG_IGN);
    // Flush diagnostics line by line, also to files and pipes.
    std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
    if (!hasDisplay({argv, argv + argc})) {
        std::fputs("zebmaker: there is no display to open a window on\n", stderr);
        return 1;
    }
    QApplication application(argc, argv);
    QApplication::setApplicationName("zebmaker");
    QApplication::setApplicationVersion(ZEB_VERSION);
    QApplication::setDesktopFileName("zebmaker");
    QApplication::setWindowIcon(applicationIcon());
    zeb::setTextLocale(zeb::systemTextLocale());
    QTranslator translator;
    translateDialogs(translator);

    const zeb::LaunchArguments arguments = zeb::readLaunchArguments();
    zeb::SingleInstance instance(runtimeFolder(), "zebmaker");
    if (!instance.isFirst(arguments.message())) return 0;

    zeb::chooseRenderer();
    QQuickStyle::setStyle("ZEBStyle");
    QQuickStyle::setFallbackStyle("Fusion");
    zeb::Services services;
    QQmlEngine engine;
    engine.addImportPath("qrc:/qt/qml");
    zeb::DockProgressController dockProgress(
        {services.dockTile, services.mainActor, [&engine] { return zeb::themeColour(engine, "accent"); }},
        applicationIcon().pixmap(dockTileSize * 2).toImage());
    zeb::ConverterViewModel converter(services.converter());
    // Created below, used once there is a request.
    zeb::ZEBPlayerWindowManager* players = nullptr;
    zeb::Scenes* scenes = nullptr;
    zeb::AppActionRouter& appActions = zeb::AppActionRouter::shared();
    zeb::ContentViewModel content({converter, services.defaults, services.notifications, services.mainActor,
                                   services.clock, *services.media, services.tasks, services.panels,
                                   services.sounds, dockProgress, appActions,
                                   [&players](const zeb::URL& url, bool hideMaker) {
                                       if (players) players->openPlayer(url, hideMaker);
                                   },
                                   [&players, &scenes] {
                                       if (players) players->stopHidingMaker();
                                       // Without the splash, which would cover the window.
                                       if (scenes) zeb::bringForward(*scenes->makeConverterWindow());
                                   },
                                   ZEB_VERSION, ""});
    const auto appear = [&content] {
        zeb::cleanSharedInbox(zeb::applicationGroupContainer(), std::chrono::system_clock::now());
        content.appear();
    };
    zeb::Scenes windows({engine, content, services.defaults, services.notifications, appear});
    scenes = &windows;
    zeb::ZEBPlayerWindowManager playerWindows(
        {engine,
         services.player(),
         services.defaults,
         services.notifications,
         [&windows] { return windows.makeConverterWindow(); },
         {[&windows] { windows.chooseVideo(); }, [&content] { content.playMovie(); },
          [&windows] { windows.showSettings(); }, [&windows] { windows.showHelp(); },
          [&content](const zeb::URL& movie) { content.openZEBFile(movie, false); }}});
    players = &playerWindows;
    services.panels.setSurroundings([&windows] { return windows.windowForPanels(); },
                                    [&engine] { return zeb::dialogPalette(engine); });
    zeb::AppDelegate delegate({content, windows, playerWindows, appActions, services.mainActor});
    QObject::connect(&engine, &QQmlEngine::quit, &windows, &zeb::Scenes::quit);
    QObject::connect(&instance, &zeb::SingleInstance::requested, &delegate,
                     [&delegate](const QStringList& message) {
                         delegate.open(zeb::LaunchArguments::fromMessage(message));
                     });

    appear();
    delegate.open(arguments);
    return QApplication::exec();
}
