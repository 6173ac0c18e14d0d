#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QStringList>
#include <memory>
#include <optional>

namespace zeb {

/// Lets one instance of a program do the work of all that a user starts: the later ones hand what they were
/// asked for to the first and end. Main thread.
///
/// The first holds a lock file, which the system gives free however it ends, and listens at a local socket
/// that only the same user can reach.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    /// `name` tells this program from others; the lock and the socket are in `folder`, which must exist.
    SingleInstance(const QString& folder, const QString& name, QObject* parent = nullptr);
    ~SingleInstance() override;

    /// True when this instance is the first, from now on until it ends. False when another one has taken
    /// `requests` over; then this one has nothing more to do. When another one holds the lock but does not
    /// answer within a few seconds, this one carries on alone: true.
    bool isFirst(const QStringList& requests);

signals:
    /// Another instance has been started and asked for these (perhaps nothing).
    void requested(const QStringList& requests);

private:
    bool handOver(const QStringList& requests) const;
    void listen();
    void take();

    QString m_socket;
    QLockFile m_lock;
    std::unique_ptr<QLocalServer> m_server;
};

}  // namespace zeb
