#include "adapters/dbus/DesktopProxy.h"

#include "adapters/dbus/Buses.h"

#include <QDBusError>
#include <QDBusMessage>
#include <QStringList>

#include <algorithm>
#include <array>
#include <atomic>
#include <memory>

namespace vellux {

namespace {

constexpr int kLongestLookUpMs = 1000;

// Those that libcurl reads for http and https.
constexpr std::array kVariables = {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"};

std::optional<std::string> askPortal(const QDBusConnection& bus, const std::string& strUrl,
                                     std::atomic<bool>& bHangs) {
    const QString strPortal = QStringLiteral("org.freedesktop.portal.Desktop");
    QDBusMessage call = QDBusMessage::createMethodCall(
        strPortal, QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.ProxyResolver"), QStringLiteral("Lookup"));
    call.setAutoStartService(false); // to start one may take longer than anybody waits for a request
    call << QString::fromStdString(strUrl);
    const QDBusMessage answer = bus.call(call, QDBus::Block, kLongestLookUpMs);
    bHangs = QDBusError(answer).type() == QDBusError::NoReply;
    const QStringList proxies = answer.arguments().value(0).toStringList();
    if (answer.type() != QDBusMessage::ReplyMessage || proxies.isEmpty())
        return std::nullopt;
    const QString& strFirst = proxies.first();
    return strFirst.startsWith(QStringLiteral("direct:")) ? std::string() : strFirst.toStdString();
}

} // namespace

std::function<std::optional<std::string>(const std::string& strUrl, bool bAsk)> desktopProxies() {
    const std::optional<QDBusConnection> bus = sessionBus();
    if (!bus || std::any_of(kVariables.begin(), kVariables.end(), qEnvironmentVariableIsSet))
        return {};
    return [bus = *bus, bHangs = std::make_shared<std::atomic<bool>>(false)](const std::string& strUrl,
                                                                             bool /*bAsk*/) {
        if (*bHangs) // once is enough: it would hold up every request
            return std::optional<std::string>();
        return askPortal(bus, strUrl, *bHangs);
    };
}

} // namespace vellux
