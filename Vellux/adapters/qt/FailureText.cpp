#include "adapters/qt/FailureText.h"

#include "app/ConnectionLog.h"

#include <QCoreApplication>
#include <QStringList>

#include <algorithm>
#include <iterator>

namespace vellux {

namespace {

// HTTP statuses.
constexpr int kUnauthorized = 401;
constexpr int kForbidden = 403;
constexpr int kNotFound = 404;
constexpr int kProxyWantsSignIn = 407;
constexpr int kServersOwn = 500; // and above

struct FailureWords {
    Q_DECLARE_TR_FUNCTIONS(vellux::FailureText)
public:
    /// %1 is the host.
    static QString of(HttpFailure failure) {
        switch (failure) {
        case HttpFailure::NotSent:
            return tr("Nothing was sent: the address is not valid, or leads away from %1.");
        case HttpFailure::NameNotFound:
            return tr("The name %1 was not found. Check the server's name and the network.");
        case HttpFailure::Refused:
            return tr("%1 refuses the connection. It may be down, or not the right server.");
        case HttpFailure::NoAnswer:
        case HttpFailure::Silent:
            return tr("%1 does not answer. It may be down, or the network is not connected to it.");
        case HttpFailure::CertificateUntrusted:
            return tr("The certificate of %1 is not trusted by this computer.");
        case HttpFailure::CertificateExpired:
            return tr("The certificate of %1 has expired or is not valid yet. Check this computer's date.");
        case HttpFailure::CertificateOtherName:
            return tr("The certificate of %1 is for another name. Check the server's name.");
        case HttpFailure::TlsTooOld:
            return tr("%1 offers only versions of TLS that are too old to be safe.");
        case HttpFailure::TlsFailed:
            return tr("No secure connection to %1 can be made.");
        case HttpFailure::Proxy:
            return tr("The proxy does not connect to %1. Check the proxy's settings.");
        case HttpFailure::Reset:
            return tr("The connection to %1 broke off.");
        case HttpFailure::TooLarge:
            return tr("The answer of %1 is too large.");
        case HttpFailure::RedirectRefused:
            return tr("%1 redirects to where the sign-in may not be sent. Check the server's name.");
        case HttpFailure::Cancelled:
        case HttpFailure::Other:
            break;
        }
        return tr("The connection to %1 failed.");
    }
    /// %1 is the host, %2 who issued the certificate.
    static QString untrusted() {
        return tr("The certificate of %1 is not trusted by this computer (issuer: %2).");
    }
    static QString noPassword() { return tr("The server takes no user name and password (%1)."); }
    static QString signedOut() { return tr("%1 does not accept the sign-in."); }
    static QString forbidden() { return tr("%1 does not let this user in. Ask who runs the server."); }
    static QString proxySignIn() { return tr("The proxy wants a sign-in of its own."); }
    /// %2 is the status.
    static QString serversFault() { return tr("%1 has trouble of its own (%2). Try later."); }
    static QString notAccepted() { return tr("%1 does not accept what it is asked (%2)."); }
    static QString noServer() {
        return tr("This address is no Lync server: %1 has nothing there. Check the server's name.");
    }
    static QString refused() { return tr("The server refuses the user name or the password."); }
    static QString blank(bool bAtEnd) {
        return bAtEnd ? tr("The server's name has a blank at its end.")
                      : tr("The server's name has a blank in it.");
    }
};

// A server that lists one of these takes a password in some way.
bool takesPassword(const std::vector<std::string>& schemes) {
    static constexpr const char* kSchemes[] = {"Basic", "Digest", "Bearer", "MsRtcOAuth"};
    return std::any_of(schemes.begin(), schemes.end(), [](const std::string& strScheme) {
        return std::any_of(std::begin(kSchemes), std::end(kSchemes), [&](const char* strOne) {
            return QString::fromStdString(strScheme).compare(QLatin1String(strOne), Qt::CaseInsensitive) == 0;
        });
    });
}

QString refusalText(const HttpExchange& exchange, const QString& strHost) {
    if (exchange.nStatus == kUnauthorized) {
        QStringList schemes;
        for (const std::string& strScheme : exchange.authenticationSchemes)
            schemes += QString::fromStdString(strScheme);
        return schemes.isEmpty() || takesPassword(exchange.authenticationSchemes)
                   ? FailureWords::signedOut().arg(strHost)
                   : FailureWords::noPassword().arg(schemes.join(QStringLiteral(", ")));
    }
    if (exchange.nStatus == kForbidden)
        return FailureWords::forbidden().arg(strHost);
    if (exchange.nStatus == kProxyWantsSignIn)
        return FailureWords::proxySignIn();
    if (exchange.nStatus >= kServersOwn)
        return FailureWords::serversFault().arg(strHost, QString::number(exchange.nStatus));
    const bool bPage = exchange.strContentType == "text/html"; // for people, not for programs
    return bPage || exchange.nStatus == kNotFound
               ? FailureWords::noServer().arg(strHost)
               : FailureWords::notAccepted().arg(strHost, QString::number(exchange.nStatus));
}

// The sign-in got no further, and no exchange of its own tells why.
QString unansweredText(const SignInStatus& signIn) {
    const QString strServer = QString::fromStdString(signIn.strServer);
    if (std::any_of(strServer.begin(), strServer.end(), [](QChar c) { return c.isSpace(); }))
        return FailureWords::blank(strServer.back().isSpace());
    return FailureWords::noServer().arg(strServer);
}

} // namespace

QString failureText(const HttpExchange& exchange) {
    const QString strHost = QString::fromStdString(exchange.strHost);
    if (!exchange.error)
        return refusalText(exchange, strHost);
    const HttpError& error = *exchange.error;
    if (error.failure == HttpFailure::CertificateUntrusted && !error.strIssuer.empty())
        return FailureWords::untrusted().arg(strHost, QString::fromStdString(error.strIssuer));
    return FailureWords::of(error.failure).arg(strHost);
}

QString whyNotConnected(const FollowingState& state, const ConnectionLog& log) {
    using Phase = FollowingState::Phase;
    using Result = SignInStatus::Result;
    if (state.phase == Phase::NotConnected && state.signIn.result == Result::Refused)
        return FailureWords::refused();
    const bool bFailed = state.phase == Phase::NotConnected && state.signIn.result == Result::Failed;
    const bool bConnecting = state.phase == Phase::Connecting;
    if (!bFailed && !bConnecting && state.phase != Phase::NotReached)
        return {};
    const auto failure = log.lastFailure();
    // While the program tries again, the reason of the last time stays.
    const bool bOfThis = state.phase == Phase::NotReached || (bConnecting && state.signIn.bAutomatic) ||
                         (failure && failure->began >= state.signIn.since);
    // An alert is open as long as a sign-in that has failed seems to go on. What a status means is known
    // later.
    const bool bToTell = !bConnecting || state.signIn.bAutomatic || (failure && failure->error);
    if (failure && !failure->strHost.empty() && bOfThis && bToTell)
        return failureText(*failure);
    return bFailed ? unansweredText(state.signIn) : QString();
}

} // namespace vellux
