// HTTPS on loopback: the one place that knows the HTTP server library.
#pragma once

#include "server/CertificateAuthority.h"
#include "server/Reply.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vellux::simulator {

/// A request that has been read to its end.
struct ServerRequest {
    std::string strMethod;
    std::string strTarget; ///< path and query, as they came
    std::optional<std::string> strAuthorization;
    std::string strBody;
    int nSocket = -1; ///< of its connection; open for as long as the request is being answered
};

/// Listens on a free port of 127.0.0.1. Connections are kept alive; each has a thread of its own (64 at
/// most), so that an answer may be held for long.
class HttpsListener {
public:
    /// Answers one request; on the connection's thread. May block until stop() is called.
    using Answer = std::function<Reply(const ServerRequest&)>;

    /// Starts listening; null when no port is available.
    static std::unique_ptr<HttpsListener> start(const Identity& identity, Answer answer);
    /// Calls stop().
    ~HttpsListener();
    HttpsListener(const HttpsListener&) = delete;
    HttpsListener& operator=(const HttpsListener&) = delete;

    int port() const;

    /// Closes all connections and waits for their threads, so every answer under way must come to its end. A
    /// second call has no effect. Not from within an answer.
    void stop();

private:
    struct Server;
    explicit HttpsListener(std::unique_ptr<Server> server);

    std::unique_ptr<Server> m_server;
};

} // namespace vellux::simulator
