#include "adapters/dbus/Buses.h"

#include <QByteArray>
#include <QFile>
#include <QLocalSocket>
#include <QString>

#include <algorithm>
#include <optional>

namespace vellux {

namespace {

// For a bus that accepts connections and never answers, the library itself would wait far longer.
constexpr int kLongestAnswerMs = 1000;

/// The value of one key of an address ("unix:path=/a,guid=1"), its escapes resolved; absent without the key.
std::optional<QString> addressValue(const QByteArray& strAddress, const QByteArray& strKey) {
    for (const QByteArray& strPair : strAddress.mid(strAddress.indexOf(':') + 1).split(',')) {
        if (strPair.startsWith(strKey + '='))
            return QFile::decodeName(QByteArray::fromPercentEncoding(strPair.mid(strKey.size() + 1)));
    }
    return std::nullopt;
}

QString runtimeBusPath() {
    return QFile::decodeName(qgetenv("XDG_RUNTIME_DIR")) + QStringLiteral("/bus");
}

/// Whether what listens at a local address speaks the bus's protocol: it lists its authentication mechanisms
/// when asked.
bool answersAt(const QString& strPath, QLocalSocket::SocketOptions options) {
    QLocalSocket socket;
    socket.setSocketOptions(options);
    socket.connectToServer(strPath);
    if (!socket.waitForConnected(kLongestAnswerMs))
        return false;
    socket.write(QByteArrayLiteral("\0AUTH\r\n"));
    return socket.waitForReadyRead(kLongestAnswerMs);
}

bool answers(const QByteArray& strAddress) {
    if (strAddress.startsWith("autolaunch:"))
        return false;
    if (!strAddress.startsWith("unix:"))
        return strAddress.contains(':'); // another transport, which fails by itself
    if (const std::optional<QString> strPath = addressValue(strAddress, "path"))
        return answersAt(*strPath, QLocalSocket::NoOptions);
    if (const std::optional<QString> strName = addressValue(strAddress, "abstract"))
        return answersAt(*strName, QLocalSocket::AbstractNamespaceOption);
    return addressValue(strAddress, "runtime") && answersAt(runtimeBusPath(), QLocalSocket::NoOptions);
}

/// Whether one of the addresses that a variable lists answers, or, with the variable unset, the usual path.
bool anyAnswers(const char* strVariable, const QString& strUsualPath) {
    const QByteArray strAddresses = qgetenv(strVariable);
    if (strAddresses.isEmpty())
        return answersAt(strUsualPath, QLocalSocket::NoOptions);
    const QList<QByteArray> addresses = strAddresses.split(';');
    return std::any_of(addresses.begin(), addresses.end(), answers);
}

std::optional<QDBusConnection> ifConnected(const QDBusConnection& bus) {
    return bus.isConnected() ? std::optional(bus) : std::nullopt;
}

} // namespace

std::optional<QDBusConnection> sessionBus() {
    static const bool bAnswers = anyAnswers("DBUS_SESSION_BUS_ADDRESS", runtimeBusPath());
    return bAnswers ? ifConnected(QDBusConnection::sessionBus()) : std::nullopt;
}

std::optional<QDBusConnection> systemBus() {
    static const bool bAnswers =
        anyAnswers("DBUS_SYSTEM_BUS_ADDRESS", QStringLiteral("/run/dbus/system_bus_socket"));
    return bAnswers ? ifConnected(QDBusConnection::systemBus()) : std::nullopt;
}

} // namespace vellux
