#include "platform/desktop/SingleInstance.h"

#include <QDataStream>
#include <QDir>
#include <QLocalSocket>
#include <QThread>
#include <QTimer>

namespace zeb {
namespace {

constexpr int patience = 3000;               ///< timeout in milliseconds for the answer of the other instance
constexpr qint64 longestMessage = 16 << 20;  ///< bytes; hundreds of long paths
constexpr auto streamVersion = QDataStream::Qt_6_0;
constexpr char taken = 1;

/// Encodes requests as zero-terminated UTF-8 texts in one byte array. QDataStream then allocates no memory
/// for a count before it has received the bytes.
QByteArray joined(const QStringList& requests) {
    QByteArray message;
    for (const QString& request : requests)
        message += request.toUtf8() + '\0';
    return message;
}

QStringList separated(const QByteArray& message) {
    QStringList requests = QString::fromUtf8(message).split(QChar(0));
    requests.removeLast();
    return requests;
}

}  // namespace

SingleInstance::SingleInstance(const QString& folder, const QString& name, QObject* parent)
    : QObject(parent),
      m_socket(QDir(folder).filePath(name + ".socket")),
      m_lock(QDir(folder).filePath(name + ".lock")) {
    // Only the end of the holder's process releases the lock, not its age.
    m_lock.setStaleLockTime(0);
}

SingleInstance::~SingleInstance() {
    if (m_server) m_server->close();
}

bool SingleInstance::isFirst(const QStringList& requests) {
    if (!m_lock.tryLock(0)) {
        if (handOver(requests)) return false;
        // The other instance may have ended. If not, it hangs, or the folder is not writable.
        if (!m_lock.tryLock(0)) return true;
    }
    listen();
    return true;
}

bool SingleInstance::handOver(const QStringList& requests) const {
    QLocalSocket socket;
    // The first instance takes the lock shortly before it listens.
    for (int attempt = 0; attempt < 20; ++attempt) {
        socket.connectToServer(m_socket);
        if (socket.waitForConnected(patience)) break;
        QThread::msleep(50);
    }
    if (socket.state() != QLocalSocket::ConnectedState) return false;
    QByteArray message;
    QDataStream stream(&message, QIODevice::WriteOnly);
    stream.setVersion(streamVersion);
    stream << joined(requests);
    socket.write(message);
    while (socket.bytesToWrite() > 0) {
        if (!socket.waitForBytesWritten(patience)) return false;
    }
    char answer = 0;
    return socket.waitForReadyRead(patience) && socket.read(&answer, 1) == 1 && answer == taken;
}

void SingleInstance::listen() {
    m_server = std::make_unique<QLocalServer>();
    m_server->setSocketOptions(QLocalServer::UserAccessOption);
    // A previous holder of the lock may have left its socket.
    QLocalServer::removeServer(m_socket);
    connect(m_server.get(), &QLocalServer::newConnection, this, &SingleInstance::take);
    m_server->listen(m_socket);
}

void SingleInstance::take() {
    while (QLocalSocket* socket = m_server->nextPendingConnection()) {
        connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
        const auto read = [this, socket] {
            if (socket->bytesAvailable() > longestMessage) return socket->abort();
            QDataStream stream(socket);
            stream.setVersion(streamVersion);
            stream.startTransaction();
            QByteArray requests;
            stream >> requests;
            if (!stream.commitTransaction()) return;
            socket->write(&taken, 1);
            socket->flush();
            emit requested(separated(requests));
        };
        connect(socket, &QLocalSocket::readyRead, this, read);
        QTimer::singleShot(patience, socket, [socket] { socket->disconnectFromServer(); });
    }
}

}  // namespace zeb
