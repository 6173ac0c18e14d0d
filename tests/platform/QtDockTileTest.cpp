#include "platform/qt/QtDockTile.h"

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

namespace zeb {
namespace {

/// What arrives on the bus.
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
    static void SetUpTestSuite() {
        ::qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "test";
        static char* arguments[] = {name, nullptr};
        static QGuiApplication application(count, arguments);
    }

    static QImage picture(const QColor& colour) {
        QImage image(128, 128, QImage::Format_ARGB32_Premultiplied);
        image.fill(colour);
        return image;
    }
    static QColor windowIconColour() {
        return QGuiApplication::windowIcon().pixmap(128).toImage().pixelColor(64, 64);
    }
};

TEST_F(QtDockTileTest, TheIconShowsThePictureAndReturns) {
    ::qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    ::qunsetenv("XDG_RUNTIME_DIR");
    QGuiApplication::setWindowIcon(QIcon(QPixmap::fromImage(picture(Qt::blue))));
    QtDockTile tile;
    tile.clear();
    EXPECT_EQ(windowIconColour(), QColor(Qt::blue));
    tile.show(picture(Qt::red), 0);
    EXPECT_EQ(windowIconColour(), QColor(Qt::red));
    tile.show(picture(Qt::green), 0.5);
    EXPECT_EQ(windowIconColour(), QColor(Qt::green));
    tile.clear();
    EXPECT_EQ(windowIconColour(), QColor(Qt::blue));
    EXPECT_EQ(tile.devicePixelRatio(), 1);
}

TEST_F(QtDockTileTest, LaunchersOnTheSessionBusHearTheProgress) {
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
