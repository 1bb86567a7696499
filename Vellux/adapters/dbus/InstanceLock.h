// The single instance's lock and socket in the user's runtime directory.
#pragma once

#include "adapters/dbus/Activations.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QString>

#include <optional>

namespace vellux {

/// A file that one process at a time can lock, and a local socket beside it on which that process receives
/// activations. The lock ends with the process, however it ends, so it is never stale; the file stays.
/// Released with this object. Main thread.
class InstanceLock {
public:
    /// `activations`, which must outlive this, gets what the socket receives.
    explicit InstanceLock(Activations& activations);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Locks the file, unless another process holds it, and listens. Returns whether we hold it now; absent
    /// when there is no private directory for it, or it can't be opened or locked.
    [[nodiscard]] std::optional<bool> tryLock();

    /// Sends the activation to the lock's holder. True when it was received, or when the holder was silent
    /// until the deadline, and so will read it later; false when nobody listens or the holder has ended.
    /// Blocks until the deadline at most.
    bool activateHolder(const LaunchTokens& tokens, const QDeadlineTimer& deadline) const;

private:
    QString socket() const;
    void takeConnections();
    void read(QLocalSocket& socket);

    const std::optional<QByteArray> m_strBase; // of both paths; absent without a private directory
    const int m_nFile;                         // its descriptor, -1 for none; closed after the socket
    Activations& m_activations;
    QLocalServer m_server;
};

} // namespace vellux
