#include "adapters/dbus/InstanceLock.h"

#include "adapters/ApplicationId.h"

#include <QDir>
#include <QFile>
#include <QLocalSocket>
#include <QObject>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vellux {

namespace {

// Each message is one line, and so is its answer: empty for an activation, the status for a question.
constexpr qint64 kLongestMessage = 4096; // bytes of one and its line's end
// Of each thousand that ask at once most wait in the system's queue; of those that never go, the oldest do.
constexpr int kMostWaiting = 1024;
constexpr qsizetype kMostOpen = 64;

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
    ::mkdir(strOwn.constData(), S_IRWXU); // it may exist, and may be somebody else's
    return isPrivateDirectory(strOwn) ? std::optional(strOwn) : std::nullopt;
}

std::optional<QByteArray> basePath() {
    const std::optional<QByteArray> strDirectory = runtimeDirectory();
    return strDirectory ? std::optional(*strDirectory + '/' + kApplicationId) : std::nullopt;
}

QString socketPath(const QByteArray& strBase) {
    return QFile::decodeName(strBase + ".socket");
}

int openLockFile(const std::optional<QByteArray>& strBase) {
    if (!strBase)
        return -1;
    const QByteArray strPath = *strBase + ".lock";
    return ::open(strPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
}

} // namespace

InstanceLock::InstanceLock(Activations& activations, const ProgramStatus& status)
    : m_strBase(basePath()), m_nFile(openLockFile(m_strBase)), m_activations(activations), m_status(status) {
    m_server.setListenBacklogSize(kMostWaiting);
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { takeConnections(); });
}

InstanceLock::~InstanceLock() {
    m_server.close();
    if (m_nFile >= 0)
        ::close(m_nFile);
}

std::optional<bool> InstanceLock::tryLock() {
    if (m_nFile < 0)
        return std::nullopt;
    if (::flock(m_nFile, LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? std::optional(false) : std::nullopt;
    QLocalServer::removeServer(socketPath(*m_strBase)); // what a crash has left
    // If this fails (a path that is too long, no descriptor left), the lock still keeps other starts out, but
    // only the bus name lets them reach this one. The same happens when a connection can't be accepted: that
    // ends the listening.
    m_server.listen(socketPath(*m_strBase));
    return true;
}

void InstanceLock::takeConnections() {
    while (QLocalSocket* const pSocket = m_server.nextPendingConnection()) {
        pSocket->setReadBufferSize(kLongestMessage);
        QObject::connect(pSocket, &QLocalSocket::readyRead, &m_server, [this, pSocket] { read(*pSocket); });
        QObject::connect(pSocket, &QLocalSocket::disconnected, &m_server, [this, pSocket] {
            m_open.removeOne(pSocket);
            pSocket->deleteLater();
        });
        m_open.append(pSocket);
        while (m_open.size() > kMostOpen)
            m_open.takeFirst()->abort();
    }
}

void InstanceLock::read(QLocalSocket& socket) {
    while (socket.canReadLine()) {
        const QByteArray strMessage = socket.readLine().chopped(1);
        if (strMessage == kStatusQuestion)
            socket.write(QByteArray::fromStdString(statusLine(m_status)));
        else
            m_activations.add({QString::fromUtf8(strMessage)});
        socket.putChar('\n');
    }
    if (socket.bytesAvailable() >= kLongestMessage)
        socket.abort();
}

HolderAnswer tellHolder(const QString& strMessage, const QDeadlineTimer& deadline) {
    using Kind = HolderAnswer::Kind;
    const std::optional<QByteArray> strBase = basePath();
    if (!strBase)
        return {};
    QLocalSocket connection;
    connection.connectToServer(socketPath(*strBase));
    if (!connection.waitForConnected(remainingMs(deadline)))
        return {};
    connection.write(strMessage.toUtf8().split('\n').first().left(kLongestMessage - 1) + '\n');
    while (!connection.canReadLine() && connection.waitForReadyRead(remainingMs(deadline))) {
    }
    if (connection.canReadLine())
        return {Kind::Answered, QString::fromUtf8(connection.readLine().chopped(1))};
    return {connection.state() == QLocalSocket::ConnectedState ? Kind::Silent : Kind::Dropped};
}

} // namespace vellux
