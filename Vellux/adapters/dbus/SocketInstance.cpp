#include "adapters/dbus/SocketInstance.h"

#include "adapters/dbus/ApplicationId.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QLocalServer>
#include <QLocalSocket>
#include <QObject>
#include <QThread>

#include <algorithm>
#include <fcntl.h>
#include <optional>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vellux {

namespace {

constexpr unsigned long kPauseMs = 20;   // between two attempts
constexpr qint64 kLongestMessage = 4096; // bytes of a token and its line's end
constexpr char kAnswer = '\n';           // an activation is one line, and so is its receipt

int remainingMs(const QDeadlineTimer& deadline) {
    return static_cast<int>(std::max<qint64>(deadline.remainingTime(), 1));
}

/// Whether it is a directory, no link to one, that belongs to this user and to nobody else.
bool isPrivateDirectory(const QByteArray& strPath) {
    struct stat status {};
    return ::lstat(strPath.constData(), &status) == 0 && S_ISDIR(status.st_mode) &&
           status.st_uid == ::getuid() && (status.st_mode & (S_IRWXG | S_IRWXO)) == 0;
}

/// XDG_RUNTIME_DIR, else a directory of our own among the temporary ones; absent when neither is private.
std::optional<QByteArray> runtimeDirectory() {
    const QByteArray strGiven = qgetenv("XDG_RUNTIME_DIR");
    if (strGiven.startsWith('/') && isPrivateDirectory(strGiven))
        return strGiven;
    const QByteArray strOwn =
        QFile::encodeName(QDir::tempPath()) + "/vellux-" + QByteArray::number(::getuid());
    ::mkdir(strOwn.constData(), S_IRWXU); // there already, perhaps, and perhaps somebody else's
    return isPrivateDirectory(strOwn) ? std::optional(strOwn) : std::nullopt;
}

/// An open file that one process at a time can lock. The lock ends with the process, however that ends, so that there
/// is no stale one; the file stays.
class LockFile {
public:
    explicit LockFile(const QByteArray& strPath)
        : m_nDescriptor(
              ::open(strPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR)) {}
    ~LockFile() {
        if (m_nDescriptor >= 0)
            ::close(m_nDescriptor);
    }
    LockFile(const LockFile&) = delete;
    LockFile& operator=(const LockFile&) = delete;

    bool isOpen() const { return m_nDescriptor >= 0; }
    bool tryLock() { return ::flock(m_nDescriptor, LOCK_EX | LOCK_NB) == 0; }

private:
    const int m_nDescriptor;
};

class SocketInstance : public SingleInstance {
public:
    /// `lock` is locked, or null for an instance on its own.
    SocketInstance(std::unique_ptr<LockFile> lock, const QString& strSocket) : m_lock(std::move(lock)) {
        QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { takeConnections(); });
        if (m_lock != nullptr) {
            QLocalServer::removeServer(strSocket); // what a crash has left
            m_server.listen(strSocket);
        }
    }

    void setActivated(std::function<void(const QString& strToken)> activated) override {
        m_activations.setActivated(std::move(activated));
    }

private:
    void takeConnections() {
        while (QLocalSocket* const pSocket = m_server.nextPendingConnection()) {
            pSocket->setReadBufferSize(kLongestMessage);
            QObject::connect(pSocket, &QLocalSocket::readyRead, &m_server,
                             [this, pSocket] { read(*pSocket); });
            QObject::connect(pSocket, &QLocalSocket::disconnected, pSocket, &QObject::deleteLater);
        }
    }

    void read(QLocalSocket& socket) {
        while (socket.canReadLine()) {
            m_activations.add(QString::fromUtf8(socket.readLine().chopped(1)));
            socket.putChar(kAnswer);
        }
        if (socket.bytesAvailable() >= kLongestMessage)
            socket.abort();
    }

    const std::unique_ptr<LockFile> m_lock; // outlives the socket
    Activations m_activations;
    QLocalServer m_server;
};

/// Whether the lock's holder has taken the activation.
bool activateHolder(const QString& strSocket, const QByteArray& strToken, const QDeadlineTimer& deadline) {
    QLocalSocket socket;
    socket.connectToServer(strSocket);
    if (!socket.waitForConnected(remainingMs(deadline)))
        return false;
    socket.write(strToken.split('\n').first().left(kLongestMessage - 1) + '\n');
    return socket.waitForReadyRead(remainingMs(deadline));
}

} // namespace

std::unique_ptr<SingleInstance> claimLockFile(const LaunchTokens& tokens, const QDeadlineTimer& deadline) {
    const std::optional<QByteArray> strDirectory = runtimeDirectory();
    if (!strDirectory)
        return std::make_unique<SocketInstance>(nullptr, QString());
    const QByteArray strBase = *strDirectory + '/' + kApplicationId;
    const QString strSocket = QFile::decodeName(strBase + ".socket");
    auto lock = std::make_unique<LockFile>(strBase + ".lock");
    if (!lock->isOpen())
        return std::make_unique<SocketInstance>(nullptr, QString());
    for (;;) {
        if (lock->tryLock())
            return std::make_unique<SocketInstance>(std::move(lock), strSocket);
        // No answer comes from a holder that does not listen yet, or no longer: the lock will be free.
        if (activateHolder(strSocket, tokens.best().toUtf8(), deadline) || deadline.hasExpired())
            return nullptr;
        QThread::msleep(kPauseMs);
    }
}

} // namespace vellux
