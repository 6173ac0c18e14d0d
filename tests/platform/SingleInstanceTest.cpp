#include "platform/desktop/SingleInstance.h"

#include <gmock/gmock.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QEventLoop>
#include <QLocalServer>
#include <QLocalSocket>
#include <QLockFile>
#include <QTimer>
#include <filesystem>
#include <thread>

#include "tests/platform/TemporaryFolder.h"

namespace zeb {
namespace {

class SingleInstanceTest : public testing::Test {
protected:
    /// Starts another instance with `requests` while the event loop runs here. Returns its `isFirst`.
    bool anotherIsFirst(const QStringList& requests) {
        bool isFirst = false;
        QEventLoop loop;
        std::thread other([&] {
            SingleInstance instance(path, "program");
            isFirst = instance.isFirst(requests);
            QMetaObject::invokeMethod(&loop, "quit", Qt::QueuedConnection);
        });
        loop.exec();
        other.join();
        return isFirst;
    }

    int argc = 1;
    char name[5] = "test";
    char* argv[2] = {name, nullptr};
    const QCoreApplication application{argc, argv};
    const test::TemporaryFolder folder;
    const QString path = QString::fromStdString(folder.path());
};

TEST_F(SingleInstanceTest, LaterInstancesHandOverToFirst) {
    SingleInstance first(path, "program");
    QStringList taken;
    QObject::connect(&first, &SingleInstance::requested, &first,
                     [&](const QStringList& requests) { taken += requests; });
    EXPECT_TRUE(first.isFirst({"mine"}));
    // More data than fits into one write of a socket.
    const QStringList many = QStringList(5000, "file:///a/path/of/some/length/movie.zeb") << "last";
    EXPECT_FALSE(anotherIsFirst(many));
    EXPECT_EQ(taken, many);
    EXPECT_FALSE(anotherIsFirst({}));

    // A client that sends nothing or invalid data does not block other clients.
    QLocalSocket silent;
    silent.connectToServer(path + "/program.socket");
    QLocalSocket wild;
    wild.connectToServer(path + "/program.socket");
    wild.write("\x7f\xff\xff\xff nonsense");
    EXPECT_FALSE(anotherIsFirst({"next"}));
    EXPECT_EQ(taken.back(), "next");
}

TEST_F(SingleInstanceTest, TakesOverFromKilledInstance) {
    const pid_t child = fork();
    if (child == 0) {
        SingleInstance instance(path, "program");
        instance.isFirst({});
        raise(SIGKILL);
    }
    waitpid(child, nullptr, 0);
    ASSERT_TRUE(std::filesystem::exists(folder.file("program.socket"))) << "nothing was left behind";
    SingleInstance next(path, "program");
    EXPECT_TRUE(next.isFirst({}));
    EXPECT_FALSE(anotherIsFirst({"request"}));
}

TEST_F(SingleInstanceTest, RunsAloneWhenFirstInstanceHangs) {
    QLockFile lock(path + "/program.lock");
    lock.setStaleLockTime(0);
    ASSERT_TRUE(lock.tryLock(0));
    QLocalServer server;
    ASSERT_TRUE(server.listen(path + "/program.socket"));
    SingleInstance instance(path, "program");
    EXPECT_TRUE(instance.isFirst({"request"}));
}

}  // namespace
}  // namespace zeb
