#include "platform/desktop/QtDockTile.h"

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QEventLoop>
#include <QGuiApplication>
#include <QPixmap>
#include <QProcess>
#include <QStandardPaths>
#include <QTimer>
#include <QVariantMap>
#include <QWindow>
#include <memory>

#include "tests/platform/OffscreenApplication.h"

namespace zeb {
namespace {

/// Receives and stores signals on the session bus.
class Listener final : public QObject {
    Q_OBJECT

public slots:
    void updated(const QString& uri, const QVariantMap& properties) {
        messages.append(uri + " " + properties.value("progress").toString() + " " +
                        properties.value("progress-visible").toString());
        emit heard();
    }

signals:
    void heard();

public:
    QStringList messages;
};

class QtDockTileTest : public testing::Test {
protected:
    static void SetUpTestSuite() { test::needApplication(); }

    static QImage picture(const QColor& colour) {
        QImage image(128, 128, QImage::Format_ARGB32_Premultiplied);
        image.fill(colour);
        return image;
    }
    static QColor colourOf(const QIcon& icon) { return icon.pixmap(128).toImage().pixelColor(64, 64); }
};

TEST_F(QtDockTileTest, EveryWindowIconShowsPictureAndReturns) {
    ::qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::qunsetenv("XDG_RUNTIME_DIR");
    QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(picture(Qt::blue))));
    QWindow shown;
    shown.create();
    QWindow hidden;
    QtDockTile tile;
    std::unique_ptr<QWindow> late;
    const auto expectIcons = [&](Qt::GlobalColor colour) {
        EXPECT_EQ(colourOf(QGuiApplication::windowIcon()), QColor(colour));
        for (const QWindow* window : {&shown, &hidden, late.get()})
            EXPECT_EQ(window ? colourOf(window->icon()) : colour, QColor(colour));
    };
    tile.clear();
    expectIcons(Qt::blue);
    tile.show(picture(Qt::red), 0);
    expectIcons(Qt::red);
    tile.show(picture(Qt::green), 0.5);
    expectIcons(Qt::green);
    late = std::make_unique<QWindow>();
    late->create();
    expectIcons(Qt::green);
    tile.show(picture(Qt::yellow), 0.7);
    expectIcons(Qt::yellow);
    tile.clear();
    expectIcons(Qt::blue);
    EXPECT_EQ(tile.devicePixelRatio(), 1);

    // The next run starts with the picture of the last one.
    tile.show(picture(Qt::yellow), 0);
    expectIcons(Qt::yellow);
}

TEST_F(QtDockTileTest, SendsProgressToLaunchersOverBus) {
    const QString program = QStandardPaths::findExecutable("dbus-daemon");
    if (program.isEmpty()) GTEST_SKIP() << "dbus-daemon is not installed";
    QProcess bus;
    bus.start(program, {"--session", "--nofork", "--print-address"});
    ASSERT_TRUE(bus.waitForStarted() && bus.waitForReadyRead(20000));
    const QByteArray address = bus.readLine().trimmed();
    ::qputenv("DBUS_SESSION_BUS_ADDRESS", address);

    Listener listener;
    QDBusConnection connection = QDBusConnection::connectToBus(address, "listener");
    ASSERT_TRUE(connection.isConnected());
    ASSERT_TRUE(connection.connect({}, {}, "com.canonical.Unity.LauncherEntry", "Update", "sa{sv}", &listener,
                                   SLOT(updated(QString, QVariantMap))));
    {
        QtDockTile tile;
        tile.show(picture(Qt::red), 0.25);
        tile.show(picture(Qt::red), 1);
        tile.clear();
        QEventLoop loop;
        QObject::connect(&listener, &Listener::heard, &loop, [&] {
            if (listener.messages.size() == 3) loop.quit();
        });
        QTimer::singleShot(20000, &loop, &QEventLoop::quit);
        loop.exec();
    }
    const QString launcher = "application://zebmaker.desktop ";
    EXPECT_EQ(listener.messages,
              QStringList({launcher + "0.25 true", launcher + "1 true", launcher + "0 false"}));
    QDBusConnection::disconnectFromBus("listener");
    bus.terminate();
    bus.waitForFinished();
}

}  // namespace
}  // namespace zeb

#include "QtDockTileTest.moc"
