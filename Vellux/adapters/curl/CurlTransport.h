// The HTTP port on libcurl.
#pragma once

#include "adapters/curl/CurlNetwork.h"
#include "ports/HttpTransport.h"
#include "threads/MainThread.h"

#include <memory>

namespace vellux {

/// Any thread may send; callbacks of asynchronous requests go to the main thread. All requests share one pool
/// of connections, whichever thread asks.
class CurlTransport : public HttpTransport {
public:
    /// Does nothing yet: the network thread starts with the first request. `mainThread` must outlive the
    /// transport.
    explicit CurlTransport(MainThread& mainThread, CurlTransportOptions options = {});
    /// Closes and waits for the network thread. Connections that are still referenced are dead afterwards.
    ~CurlTransport() override;
    CurlTransport(const CurlTransport&) = delete;
    CurlTransport& operator=(const CurlTransport&) = delete;

    HttpResponse sendSynchronousRequest(const HttpRequest& request) override;
    std::shared_ptr<HttpConnection> createConnection(const HttpRequest& request,
                                                     HttpConnectionDelegate& delegate) override;

    void close() override;

private:
    MainThread& m_mainThread;
    // Shared with the connections, which may outlive the transport: their holders are never destroyed.
    std::shared_ptr<CurlNetwork> m_network;
};

/// The versions of libcurl and of its TLS library, as libcurl names them: "8.5.0, OpenSSL/3.0.13".
[[nodiscard]] std::string curlVersion();

} // namespace vellux
