// The single instance's lock and socket in the user's runtime directory.
#pragma once

#include "adapters/dbus/Activations.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QLocalServer>
#include <QString>

#include <optional>

namespace vellux {

/// A file that one process at a time can lock, and a local socket beside it on which that process takes
/// activations. The lock ends with the process, however that ends, so that there is no stale one; the file
/// stays. Given up with this object. Main thread.
class InstanceLock {
public:
    /// `activations`, which must outlive this, takes in what the socket is sent.
    explicit InstanceLock(Activations& activations);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Locks the file, unless another process holds it, and listens. Whether it is ours now; absent when
    /// there is no private directory for it, or when it can't be opened or locked.
    std::optional<bool> tryLock();

    /// Hands the activation to whoever listens. True when that one has taken it, or keeps it until it goes
    /// on, having been silent until the deadline; false when nobody listens, or who did has ended. Blocks
    /// until the deadline at most.
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
