#include "adapters/curl/CurlTransport.h"

#include "ports/Platform.h"

#include <condition_variable>
#include <mutex>
#include <utility>

namespace vellux {

namespace {

// Where a thread that sends waits for its answer.
class Waiter {
public:
    void finish(HttpResponse answer) {
        const std::lock_guard lock(m_mutex);
        m_answer = std::move(answer);
        m_finished.notify_one(); // under the lock: the waiter may be destroyed right after it
    }

    HttpResponse wait() {
        std::unique_lock lock(m_mutex);
        m_finished.wait(lock, [this] { return m_answer.has_value(); });
        return std::move(*m_answer);
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_finished;
    std::optional<HttpResponse> m_answer;
};

// An asynchronous request. Its callbacks are posted to main and keep it alive until the last of them has run.
class CurlConnection : public HttpConnection, public std::enable_shared_from_this<CurlConnection> {
public:
    CurlConnection(MainThread& mainThread, std::shared_ptr<CurlNetwork> network, HttpRequest request,
                   HttpConnectionDelegate& delegate)
        : m_mainThread(mainThread), m_network(std::move(network)), m_request(std::move(request)),
          m_delegate(delegate) {}

    void start() override {
        assertMainThread(m_mainThread);
        if (std::exchange(m_bStarted, true) || m_bCancelled)
            return;
        m_transfer = std::make_shared<CurlTransfer>(
            m_request, [self = shared_from_this()](std::string bytes) { self->postData(std::move(bytes)); },
            [self = shared_from_this()](HttpResponse answer) { self->postEnd(std::move(answer)); });
        if (auto error = m_network->start(m_transfer)) {
            m_transfer = nullptr;
            postEnd({std::nullopt, std::move(error)});
        }
    }

    void cancel() override {
        assertMainThread(m_mainThread);
        m_bCancelled = true;
        if (m_transfer != nullptr)
            m_network->cancel(std::exchange(m_transfer, nullptr));
    }

private:
    // Network thread.
    void postData(std::string bytes) {
        m_mainThread.post([self = shared_from_this(), bytes = std::move(bytes)] {
            assertMainThread(self->m_mainThread);
            self->deliver(bytes);
        });
    }
    void postEnd(HttpResponse answer) {
        m_mainThread.post([self = shared_from_this(), answer = std::move(answer)] {
            assertMainThread(self->m_mainThread);
            self->finish(answer);
        });
    }

    // Each call of the delegate may cancel the connection.
    bool isOver() VELLUX_REQUIRES(mainThreadRole) { return m_bCancelled || m_network->isClosed(); }
    void respond() VELLUX_REQUIRES(mainThreadRole) {
        if (!isOver() && !std::exchange(m_bResponded, true))
            m_delegate.connectionDidReceiveResponse(*this);
    }
    void deliver(const std::string& bytes) VELLUX_REQUIRES(mainThreadRole) {
        respond();
        if (!isOver())
            m_delegate.connectionDidReceiveData(*this, bytes);
    }
    void finish(const HttpResponse& answer) VELLUX_REQUIRES(mainThreadRole) {
        m_transfer = nullptr; // ends the cycle that kept this connection alive
        if (!answer.error)
            respond();
        if (isOver())
            return;
        if (answer.error)
            m_delegate.connectionDidFailWithError(*this, *answer.error);
        else
            m_delegate.connectionDidFinishLoading(*this);
    }

    MainThread& m_mainThread;
    const std::shared_ptr<CurlNetwork> m_network;
    const HttpRequest m_request;
    HttpConnectionDelegate& m_delegate;
    std::shared_ptr<CurlTransfer> m_transfer VELLUX_GUARDED_BY(mainThreadRole);
    bool m_bStarted VELLUX_GUARDED_BY(mainThreadRole) = false;
    bool m_bCancelled VELLUX_GUARDED_BY(mainThreadRole) = false;
    bool m_bResponded VELLUX_GUARDED_BY(mainThreadRole) = false;
};

} // namespace

CurlTransport::CurlTransport(MainThread& mainThread, CurlTransportOptions options)
    : m_mainThread(mainThread), m_network(std::make_shared<CurlNetwork>(std::move(options))) {}

CurlTransport::~CurlTransport() {
    m_network->stop();
}

HttpResponse CurlTransport::sendSynchronousRequest(const HttpRequest& request) {
    Waiter waiter;
    const auto transfer = std::make_shared<CurlTransfer>(
        request, nullptr, [&waiter](HttpResponse answer) { waiter.finish(std::move(answer)); });
    if (auto error = m_network->start(transfer))
        return {std::nullopt, std::move(error)};
    return waiter.wait();
}

std::shared_ptr<HttpConnection> CurlTransport::createConnection(const HttpRequest& request,
                                                                HttpConnectionDelegate& delegate) {
    return std::make_shared<CurlConnection>(m_mainThread, m_network, request, delegate);
}

void CurlTransport::close() {
    m_network->close();
}

std::string curlVersion() {
    const curl_version_info_data& info = *curl_version_info(CURLVERSION_NOW); // libcurl's
    return std::string(info.version) + (info.ssl_version != nullptr ? ", " : "") +
           (info.ssl_version != nullptr ? info.ssl_version : "");
}

} // namespace vellux
