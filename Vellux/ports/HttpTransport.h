// What the presence client asks of an HTTP facility.
#pragma once

#include "threads/MainThread.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vellux {

using HttpHeaderFields = std::vector<std::pair<std::string, std::string>>;

/// One request. The header fields go out in this order, each once, after Host; the transport puts none of its
/// own between them.
struct HttpRequest {
    std::string strMethod = "GET";
    std::string strUrl;
    HttpHeaderFields headerFields;
    /// Absent for a request without a body; an empty body is a body.
    std::optional<std::string> strBody;
    /// For a synchronous request the total time, including name look-up, connecting and handshake. For an
    /// asynchronous one the longest silence: each piece of the answer, headers included, restarts it.
    std::chrono::milliseconds timeout{30'000};
    /// The URL that this request's credential belongs to: the one that issued the Authorization value, or
    /// that the password was typed for. The request is sent only by https to that URL's host and port, and
    /// otherwise fails before any byte is sent; so does one with an Authorization field but without this.
    std::optional<std::string> strCredentialOrigin{};
};

/// What kind of failure ended an exchange. For people to read; no decision of the client depends on it.
enum class HttpFailure {
    Other,
    NotSent,              ///< malformed, or a credential would have left its origin: nothing was sent
    NameNotFound,         ///< the host's name has no address
    Refused,              ///< the host or the network refused the connection
    NoAnswer,             ///< the time limit passed before the connection stood, TLS handshake included
    Silent,               ///< the time limit passed on a connection that stood: the usual end of an idle poll
    CertificateUntrusted, ///< of an issuer that this computer does not trust
    CertificateExpired,   ///< or not valid yet
    CertificateOtherName, ///< issued for another host
    TlsTooOld,            ///< the server offers no TLS version that is allowed
    TlsFailed,            ///< the handshake failed for another reason
    Proxy,                ///< the proxy was not found, refused, or would not connect
    Reset,                ///< the connection broke off
    TooLarge,             ///< the body exceeds 16 MiB
    RedirectRefused,      ///< redirected to where the request may not go
    Cancelled,            ///< by this program
};

/// Why an exchange failed. Holds no header value, no body and no credential.
struct HttpError {
    std::string strDescription; ///< in the transport's words
    HttpFailure failure = HttpFailure::Other;
    /// Who issued the certificate that was refused, as its common name or organisation; "" when not known.
    std::string strIssuer{};
};

/// The result of a synchronous exchange. It has no status code: nothing reads it.
/// (kept-on-purpose:status-codes)
struct HttpResponse {
    /// Absent when there was no answer at all; empty for an answer without content (a 204, an empty 200).
    std::optional<std::string> strBody;
    /// Absent on success. A broken transfer has both the bytes so far and the error.
    std::optional<HttpError> error;

    /// Whether there is a body and no error.
    bool succeeded() const { return strBody.has_value() && !error.has_value(); }
};

class HttpConnection;

/// Receives the callbacks of an asynchronous request, all on the main thread.
class HttpConnectionDelegate {
public:
    virtual ~HttpConnectionDelegate() = default;
    virtual void connectionDidReceiveResponse(HttpConnection& connection) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// The data that belongs together: the whole body, or what arrived before 100 ms of silence.
    virtual void connectionDidReceiveData(HttpConnection& connection, std::string_view data)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Last callback of a request whose answer is complete.
    virtual void connectionDidFinishLoading(HttpConnection& connection) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Last callback of a request that failed or ran into its time limit.
    virtual void connectionDidFailWithError(HttpConnection& connection, const HttpError& error)
        VELLUX_REQUIRES(mainThreadRole) = 0;
};

/// An asynchronous request. Main thread only. It keeps itself alive until it is over: dropping the reference
/// does not cancel it.
class HttpConnection {
public:
    HttpConnection() = default;
    virtual ~HttpConnection() = default;
    HttpConnection(const HttpConnection&) = delete;
    HttpConnection& operator=(const HttpConnection&) = delete;

    /// Starts the request; a second start has no effect.
    virtual void start() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Ends the request; no callback arrives afterwards, not even one already queued.
    virtual void cancel() VELLUX_REQUIRES(mainThreadRole) = 0;
};

class HttpTransport {
public:
    virtual ~HttpTransport() = default;

    /// Performs one exchange. Any thread, with no lock held; blocks until it is over, for up to
    /// request.timeout. Errors include a URL that is malformed, has no host or has user information; a header
    /// field with a line break; a credential that would leave its origin; and a body over 16 MiB. Redirects
    /// are followed, but a request with a body or a credential is not sent to another scheme, host or port.
    [[nodiscard]] virtual HttpResponse sendSynchronousRequest(const HttpRequest& request) = 0;

    /// Creates an asynchronous request whose callbacks go to `delegate`, which must outlive it. Main thread.
    /// Never null.
    [[nodiscard]] virtual std::shared_ptr<HttpConnection> createConnection(const HttpRequest& request,
                                                                           HttpConnectionDelegate& delegate)
        VELLUX_REQUIRES(mainThreadRole) = 0;

    /// Cancels what is under way: synchronous requests return an error at once, asynchronous ones call nobody
    /// back, and later requests fail. Any thread.
    virtual void close() = 0;
};

} // namespace vellux
