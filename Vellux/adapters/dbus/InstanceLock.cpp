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
    ::mkdir(strOwn.constData(), S_IRWXU); // it may exist, and may be somebody else's
    return isPrivateDirectory(strOwn) ? std::optional(strOwn) : std::nullopt;
}

std::optional<QByteArray> basePath() {
    const std::optional<QByteArray> strDirectory = runtimeDirectory();
    return strDirectory ? std::optional(*strDirectory + '/' + kApplicationId) : std::nullopt;
}

int openLockFile(const std::optional<QByteArray>& strBase) {
    if (!strBase)
        return -1;
    const QByteArray strPath = *strBase + ".lock";
    return ::open(strPath.constData(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, S_IRUSR | S_IWUSR);
}

} // namespace

InstanceLock::InstanceLock(Activations& activations)
    : m_strBase(basePath()), m_nFile(openLockFile(m_strBase)), m_activations(activations) {
    QObject::connect(&m_server, &QLocalServer::newConnection, &m_server, [this] { takeConnections(); });
}

InstanceLock::~InstanceLock() {
    m_server.close();
    if (m_nFile >= 0)
        ::close(m_nFile);
}

QString InstanceLock::socket() const {
    return QFile::decodeName(*m_strBase + ".socket");
}

std::optional<bool> InstanceLock::tryLock() {
    if (m_nFile < 0)
        return std::nullopt;
    if (::flock(m_nFile, LOCK_EX | LOCK_NB) != 0)
        return errno == EWOULDBLOCK ? std::optional(false) : std::nullopt;
    QLocalServer::removeServer(socket()); // what a crash has left
    // If this fails (a path that is too long, no descriptor left), the lock still keeps other starts out, but
    // only the bus name lets them reach this one. The same happens when a connection can't be accepted: that
    // ends the listening.
    m_server.listen(socket());
    return true;
}

void InstanceLock::takeConnections() {
    while (QLocalSocket* const pSocket = m_server.nextPendingConnection()) {
        pSocket->setReadBufferSize(kLongestMessage);
        QObject::connect(pSocket, &QLocalSocket::readyRead, &m_server, [this, pSocket] { read(*pSocket); });
        QObject::connect(pSocket, &QLocalSocket::disconnected, pSocket, &QObject::deleteLater);
    }
}

void InstanceLock::read(QLocalSocket& socket) {
    while (socket.canReadLine()) {
        m_activations.add(QString::fromUtf8(socket.readLine().chopped(1)));
        socket.putChar(kAnswer);
    }
    if (socket.bytesAvailable() >= kLongestMessage)
        socket.abort();
}

bool InstanceLock::activateHolder(const LaunchTokens& tokens, const QDeadlineTimer& deadline) const {
    if (!m_strBase)
        return false;
    QLocalSocket connection;
    connection.connectToServer(socket());
    if (!connection.waitForConnected(remainingMs(deadline)))
        return false;
    connection.write(tokens.best().toUtf8().split('\n').first().left(kLongestMessage - 1) + '\n');
    return connection.waitForReadyRead(remainingMs(deadline)) ||
           connection.state() == QLocalSocket::ConnectedState;
}

} // namespace vellux
