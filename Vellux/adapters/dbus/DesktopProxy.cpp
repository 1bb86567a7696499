#include "adapters/dbus/DesktopProxy.h"

#include "adapters/dbus/Buses.h"
#include "threads/Mutex.h"

#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStringList>

#include <algorithm>
#include <array>
#include <map>
#include <memory>

namespace vellux {

namespace {

constexpr int kLongestLookUpMs = 1000;

// Those that libcurl reads for http and https.
constexpr std::array kVariables = {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"};

/// Scheme, host and port of a URL, with the path "/".
std::string originOf(const std::string& strUrl) {
    const std::size_t nHost = strUrl.find("//");
    return strUrl.substr(0, nHost == std::string::npos ? nHost : strUrl.find('/', nHost + 2)) + '/';
}

std::optional<std::string> firstProxy(const QStringList& proxies) {
    if (proxies.isEmpty())
        return std::nullopt;
    return proxies.first().startsWith(QStringLiteral("direct:")) ? "" : proxies.first().toStdString();
}

/// Asks the portal, and keeps its answers.
class Resolver {
public:
    explicit Resolver(const QDBusConnection& bus) : m_bus(bus) {}

    std::optional<std::string> proxyOf(const std::string& strUrl, bool bAsk) {
        const std::string strOrigin = originOf(strUrl);
        std::optional<QDBusPendingCall> question;
        {
            const ScopedLock lock(m_mutex);
            if (bAsk || !m_known.contains(strOrigin))
                question = ask(strOrigin);
        }
        if (question)
            question->waitForFinished();
        const ScopedLock lock(m_mutex);
        return takeAnswer(strOrigin).strProxy;
    }

    void askAgain(const std::string& strUrl) {
        const ScopedLock lock(m_mutex);
        ask(originOf(strUrl));
    }

private:
    struct Known {
        std::optional<std::string> strProxy;
        std::optional<QDBusPendingCall> question; // one that has not been answered yet
    };

    /// One question at a time.
    QDBusPendingCall ask(const std::string& strOrigin) VELLUX_REQUIRES(m_mutex) {
        Known& known = takeAnswer(strOrigin);
        if (!known.question) {
            QDBusMessage call = QDBusMessage::createMethodCall(
                QStringLiteral("org.freedesktop.portal.Desktop"),
                QStringLiteral("/org/freedesktop/portal/desktop"),
                QStringLiteral("org.freedesktop.portal.ProxyResolver"), QStringLiteral("Lookup"));
            call.setAutoStartService(false); // starting one may take longer than a request may wait
            call << QString::fromStdString(strOrigin);
            known.question = m_bus.asyncCall(call, kLongestLookUpMs);
        }
        return *known.question;
    }

    Known& takeAnswer(const std::string& strOrigin) VELLUX_REQUIRES(m_mutex) {
        Known& known = m_known[strOrigin];
        if (!known.question || !known.question->isFinished())
            return known;
        const QDBusMessage answer = known.question->reply();
        known.question.reset();
        if (answer.type() == QDBusMessage::ReplyMessage)
            known.strProxy = firstProxy(answer.arguments().value(0).toStringList());
        return known;
    }

    const QDBusConnection m_bus;
    Mutex m_mutex;
    std::map<std::string, Known> m_known VELLUX_GUARDED_BY(m_mutex);
};

} // namespace

DesktopProxies desktopProxies() {
    const std::optional<QDBusConnection> bus = sessionBus();
    if (!bus || std::any_of(kVariables.begin(), kVariables.end(), qEnvironmentVariableIsSet))
        return {};
    const auto resolver = std::make_shared<Resolver>(*bus);
    return {[resolver](const std::string& strUrl, bool bAsk) { return resolver->proxyOf(strUrl, bAsk); },
            [resolver](const std::string& strUrl) { resolver->askAgain(strUrl); }};
}

} // namespace vellux
