// The single instance's lock and socket in the user's runtime directory.
#pragma once

#include "adapters/dbus/Activations.h"
#include "model/ProgramStatus.h"

#include <QByteArray>
#include <QDeadlineTimer>
#include <QList>
#include <QLocalServer>
#include <QLocalSocket>
#include <QString>

#include <optional>

namespace vellux {

/// What came of a message to the lock's holder.
struct HolderAnswer {
    enum class Kind {
        Nobody,   ///< nobody listens
        Dropped,  ///< the holder has ended, or had too many to answer
        Silent,   ///< no answer until the deadline; the holder will read the message later
        Answered, ///< the message was received
    };
    Kind kind = Kind::Nobody;
    QString strLine = {}; ///< of an answer to kStatusQuestion: the status line
};

/// The message that asks for the status, which no activation token is.
inline constexpr const char* kStatusQuestion = "\x05status";

/// Sends the lock's holder a message of one line: an activation's token, or kStatusQuestion. Blocks until the
/// deadline at most. Main thread.
HolderAnswer tellHolder(const QString& strMessage, const QDeadlineTimer& deadline);

/// A file that one process at a time can lock, and a local socket beside it on which that process receives
/// activations and questions for the status. The lock ends with the process, however it ends, so it is never
/// stale; the file stays. Released with this object. Main thread.
class InstanceLock {
public:
    /// Both outlive this: `activations` gets what the socket receives, `status` is what it answers.
    InstanceLock(Activations& activations, const ProgramStatus& status);
    ~InstanceLock();
    InstanceLock(const InstanceLock&) = delete;
    InstanceLock& operator=(const InstanceLock&) = delete;

    /// Locks the file, unless another process holds it, and listens. Returns whether we hold it now; absent
    /// when there is no private directory for it, or it can't be opened or locked.
    [[nodiscard]] std::optional<bool> tryLock();

private:
    void takeConnections();
    void read(QLocalSocket& socket);

    const std::optional<QByteArray> m_strBase; // of both paths; absent without a private directory
    const int m_nFile;                         // its descriptor, -1 for none; closed after the socket
    Activations& m_activations;
    const ProgramStatus& m_status;
    QLocalServer m_server;
    QList<QLocalSocket*> m_open; // the server's, oldest first
};

} // namespace vellux
