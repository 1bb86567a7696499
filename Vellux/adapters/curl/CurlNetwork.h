// The network thread: one curl multi handle, one connection pool, all requests.
#pragma once

#include "adapters/curl/CurlTransfer.h"
#include "threads/Mutex.h"

#include <curl/curl.h>

#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vellux {

/// Runs transfers. The first of them creates the network thread and curl's handles. Operations may be called
/// from any thread; the transfers' callbacks come on the network thread, which blocks on nothing but its own
/// poll and sleeps while there is nothing to do.
class CurlNetwork {
public:
    explicit CurlNetwork(CurlTransportOptions options);
    ~CurlNetwork();
    CurlNetwork(const CurlNetwork&) = delete;
    CurlNetwork& operator=(const CurlNetwork&) = delete;

    /// Starts a transfer. Absent on success; else why it was not started (not to be sent, closed, or no
    /// resources for the thread), and the transfer calls nobody but the observer.
    [[nodiscard]] std::optional<HttpError> start(const std::shared_ptr<CurlTransfer>& transfer);
    /// Drops a transfer without a callback, and closes its socket.
    void cancel(const std::shared_ptr<CurlTransfer>& transfer);
    /// Accepts no more transfers, ends those that a thread waits for with an error, and drops the others.
    /// Returns at once.
    void close();
    bool isClosed();
    /// Closes, waits until the network thread and so every callback has ended, and closes the pool. Not on
    /// the network thread. Required before the last reference is dropped.
    void stop();

private:
    using Transfers = std::vector<std::shared_ptr<CurlTransfer>>;

    std::optional<HttpError> enqueue(const std::shared_ptr<CurlTransfer>& transfer);
    bool makeThread() VELLUX_REQUIRES(m_mutex);
    void run();
    bool takePending();
    void begin(const std::shared_ptr<CurlTransfer>& transfer);
    void finishDone();
    void drop(const std::shared_ptr<CurlTransfer>& transfer);
    int watchSilence();
    void wakeUp() VELLUX_REQUIRES(m_mutex);

    const CurlTransportOptions m_options;

    // The network thread's own, made before it starts.
    struct FreeMulti {
        void operator()(CURLM* multi) const { curl_multi_cleanup(multi); }
    };
    struct FreeShare {
        void operator()(CURLSH* share) const { curl_share_cleanup(share); }
    };
    std::unique_ptr<CURLSH, FreeShare> m_share; // cookies and TLS sessions, kept in memory
    std::unique_ptr<CURLM, FreeMulti> m_multi;
    Transfers m_running;

    Mutex m_mutex;
    Transfers m_starting VELLUX_GUARDED_BY(m_mutex);
    Transfers m_cancelled VELLUX_GUARDED_BY(m_mutex);
    bool m_bClosed VELLUX_GUARDED_BY(m_mutex) = false;

    std::thread m_thread; // started under m_mutex, by the first transfer
};

} // namespace vellux
