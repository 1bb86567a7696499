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

/// One request. The header fields go out in this order, each once, after Host and with nothing of the
/// transport's own invention among them.
struct HttpRequest {
    std::string strMethod = "GET";
    std::string strUrl;
    HttpHeaderFields headerFields;
    /// Absent for a request without a body; an empty body is a body.
    std::optional<std::string> body;
    /// For a synchronous request what it may take in all, name look-up, connecting and handshake included.
    /// For an asynchronous one how long nothing may arrive: each piece of the answer, also of its head,
    /// starts it again.
    std::chrono::milliseconds timeout{30'000};
    /// Where the credential in this request belongs: the URL that issued the Authorization value, or that the
    /// password was typed for. Such a request goes by https to the host and port of that URL, or fails before
    /// a byte of it has left; so does one with an Authorization field but without this.
    std::optional<std::string> strCredentialOrigin{};
};

/// Why an exchange failed, in the transport's words. Holds no header value, no body and no credential.
struct HttpError {
    std::string strDescription;
};

/// What came of a synchronous exchange. The status code is not there: nobody looks at it.
/// (kept-on-purpose:status-codes)
struct HttpResponse {
    /// Absent when no answer came at all; empty for an answer without content (a 204, an empty 200).
    std::optional<std::string> body;
    /// Absent when the exchange went through. A broken transfer gives the bytes so far and the error.
    std::optional<HttpError> error;

    /// A body came back and nothing went wrong.
    bool succeeded() const { return body.has_value() && !error.has_value(); }
};

class HttpConnection;

/// Receives the callbacks of an asynchronous request, all on the main thread.
class HttpConnectionDelegate {
public:
    virtual ~HttpConnectionDelegate() = default;
    virtual void connectionDidReceiveResponse(HttpConnection& connection) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Pieces that belong together come together: the whole body, or what came before 100 ms of silence.
    virtual void connectionDidReceiveData(HttpConnection& connection, std::string_view data)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Last callback of a request whose answer is complete.
    virtual void connectionDidFinishLoading(HttpConnection& connection) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Last callback of a request that failed or ran into its time limit.
    virtual void connectionDidFailWithError(HttpConnection& connection, const HttpError& error)
        VELLUX_REQUIRES(mainThreadRole) = 0;
};

/// An asynchronous request. Main thread only. It lives on by itself until it is over: dropping the
/// reference does not cancel it.
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

    /// Performs one exchange. Any thread, with no lock held; blocks until it is over, request.timeout at
    /// most. A text that forms no URL, user information or no host in it, a header value with a line break, a
    /// credential that would leave its origin, a body over 16 MiB: an error. Redirects are followed, but a
    /// request with a body or a credential is not sent to another scheme, host or port.
    virtual HttpResponse sendSynchronousRequest(const HttpRequest& request) = 0;

    /// Creates an asynchronous request whose callbacks go to `delegate`, which must outlive it. Main thread.
    /// Never null.
    virtual std::shared_ptr<HttpConnection> createConnection(const HttpRequest& request,
                                                             HttpConnectionDelegate& delegate)
        VELLUX_REQUIRES(mainThreadRole) = 0;

    /// Cancels what is under way: synchronous requests return an error at once, asynchronous ones call nobody
    /// back, and later requests fail. Any thread.
    virtual void close() = 0;
};

} // namespace vellux
