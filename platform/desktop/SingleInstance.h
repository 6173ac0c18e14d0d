#pragma once

#include <QLocalServer>
#include <QLockFile>
#include <QObject>
#include <QStringList>
#include <memory>
#include <optional>

namespace zeb {

/// Makes one instance of a program serve all requests of a user: a later instance passes its requests to the
/// first one and ends. Main thread.
///
/// The first instance holds a lock file, which the system releases even after a crash, and listens at a local
/// socket that only the same user can access.
class SingleInstance final : public QObject {
    Q_OBJECT

public:
    /// `name` identifies the program; the lock and the socket are in `folder`, which must exist.
    SingleInstance(const QString& folder, const QString& name, QObject* parent = nullptr);
    ~SingleInstance() override;

    /// Returns true if this instance is the first; it stays the first until it ends. Returns false if another
    /// instance has accepted `requests`; this one should then end. Returns true as well if another instance
    /// holds the lock but does not answer within a few seconds.
    bool isFirst(const QStringList& requests);

signals:
    /// Another instance was started with these requests (may be empty).
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
