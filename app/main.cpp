#include <QtQml/qqmlextensionplugin.h>
#include <QDir>
#include <QGuiApplication>
#include <QQmlEngine>
#include <QQuickStyle>
#include <QStandardPaths>
#include <csignal>
#include <cstdio>

#include "app/LaunchArguments.h"
#include "app/Services.h"
#include "platform/TextLocale.h"
#include "platform/qt/QtTextLocale.h"
#include "platform/qt/SingleInstance.h"
#include "player/window/ZEBPlayerWindowManager.h"

Q_IMPORT_QML_PLUGIN(ZEBStylePlugin)
Q_IMPORT_QML_PLUGIN(ZEBPlayerPlugin)

namespace {

/// Where the lock and the socket of the running instance are.
QString runtimeFolder() {
    QString folder = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
    QDir().mkpath(folder);
    return folder;
}

}  // namespace

int main(int argc, char** argv) {
    // A write beyond the limit of a file's size fails like any other instead of ending the process.
    std::signal(SIGXFSZ, SIG_IGN);
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName("zebmaker");
    QGuiApplication::setApplicationVersion(ZEB_VERSION);
    QGuiApplication::setDesktopFileName("zebmaker");
    zeb::setTextLocale(zeb::systemTextLocale());

    const zeb::LaunchArguments arguments = zeb::readLaunchArguments();
    if (arguments.requests.isEmpty()) {
        std::fprintf(stderr, "zebmaker: which movie? (see \"zebmaker --help\")\n");
        return 2;
    }
    zeb::SingleInstance instance(runtimeFolder(), "zebmaker");
    if (!instance.isFirst(arguments.requests)) return 0;

    QQuickStyle::setStyle("ZEBStyle");
    QQuickStyle::setFallbackStyle("Fusion");
    zeb::Services services;
    QQmlEngine engine;
    engine.addImportPath("qrc:/qt/qml");
    zeb::ZEBPlayerWindowManager windows(
        {engine, services.player(), services.defaults, services.notifications, {}});
    const auto open = [&](const QStringList& requests, bool hideMaker) {
        for (const QString& request : requests) {
            if (const auto url = zeb::URL::parse(request.toStdString())) windows.openPlayer(*url, hideMaker);
        }
    };
    QObject::connect(&instance, &zeb::SingleInstance::requested, &application,
                     [&](const QStringList& requests) { open(requests, true); });
    open(arguments.requests, !arguments.showMaker);
    return QGuiApplication::exec();
}
