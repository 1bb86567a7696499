// One request on its way through curl.
#pragma once

#include "adapters/curl/CurlFailure.h"
#include "adapters/curl/HandshakeWatch.h"
#include "ports/HttpExchange.h"

#include <curl/curl.h>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace vellux {

/// Options for programs with a server of their own; the product uses the defaults, and proxies.
struct CurlTransportOptions {
    /// Certificate authorities to trust, as PEM text; absent: the system's trust store. Verification is
    /// always on.
    std::optional<std::string> strTrustedAuthorities;
    /// Whether proxies are used: those that the environment names, or what `proxyOf` says.
    bool bUseProxies = true;
    /// The proxy of a URL, "" for none; absent leaves it to the environment. Called for each request, on the
    /// thread that sends it. `bAsk` is set for a request without an Authorization value, which begins a
    /// sign-in: the function may then take up to a second to read the settings again. Optional.
    std::function<std::optional<std::string>(const std::string& strUrl, bool bAsk)> proxyOf{};
    /// Called on the network thread, which it must not block, when no connection for a URL could be made: the
    /// proxy settings may have changed. Optional.
    std::function<void(const std::string& strUrl)> connectionFailed{};
    /// Called for each request, also for one that is not sent, on the network thread or on the one that
    /// sends. Optional.
    HttpExchangeObserver observer{};
};

/// One request, the easy handle that performs it, and its result so far. Created on any thread, then used on
/// the network thread only, callbacks included.
class CurlTransfer {
public:
    using Clock = std::chrono::steady_clock;

    /// Called with the bytes since the last call when the response is complete or nothing has arrived for 100
    /// ms. Without it the whole body goes to `ended`.
    using Received = std::function<void(std::string bytes)>;
    /// Called once, last. Without a `received`, the answer holds the body.
    using Ended = std::function<void(HttpResponse answer)>;

    CurlTransfer(HttpRequest request, Received received, Ended ended);
    ~CurlTransfer();
    CurlTransfer(const CurlTransfer&) = delete;
    CurlTransfer& operator=(const CurlTransfer&) = delete;

    /// Takes the options' observer, and their proxy for the request, before the transfer is handed to the
    /// network thread. Absent on success; else why the request must not be sent.
    [[nodiscard]] std::optional<HttpError> accept(const CurlTransportOptions& options);
    /// Tells the observer how the exchange ended, unless it has been told.
    void tell(const std::optional<HttpError>& error);
    /// Sets the easy handle up; null when curl can't make one.
    CURL* prepare(const CurlTransportOptions& options, CURLSH* share);
    CURL* handle() const { return m_easy.get(); }
    /// Calls connectionFailed if the transfer failed before there was a connection. Before release().
    void tellIfUnconnected(CURLcode code, const CurlTransportOptions& options) const;
    /// Frees the easy handle, which must have left the multi handle. On the network thread, since it touches
    /// what the handles share.
    void release();

    static constexpr Clock::time_point kNever = Clock::time_point::max();
    /// When gathered bytes are to be delivered; kNever when there are none.
    Clock::time_point gatheredDue() const;
    /// When the transfer will have been silent for too long; kNever for one whose time counts from its start.
    Clock::time_point silenceDue() const;
    /// Delivers gathered bytes.
    void flush();

    /// Ends the transfer, once; then releases its callbacks and what they hold.
    void end(CURLcode code);
    /// Ends the transfer without a callback.
    void abandon();
    /// Ends the transfer because the network closes: with an error when a thread waits for it, else without a
    /// callback.
    void close();

private:
    static curl_socket_t onSocket(void* self, curlsocktype purpose, curl_sockaddr* address);
    static int onConnected(void* self, char* strAddress, char* strOwnAddress, int nPort, int nOwnPort);
    static std::size_t onHead(char* bytes, std::size_t nSize, std::size_t nCount, void* self);
    static std::size_t onBytes(char* bytes, std::size_t nSize, std::size_t nCount, void* self);
    void setHeaderFields();
    void keepFacts();
    void finish(std::optional<HttpError> error);

    struct FreeEasy {
        void operator()(CURL* easy) const { curl_easy_cleanup(easy); }
    };
    struct FreeList {
        void operator()(curl_slist* list) const { curl_slist_free_all(list); }
    };

    const HttpRequest m_request;
    std::optional<std::string> m_strProxy;
    HttpExchangeObserver m_observer; // empty when there is none, or once it has been told
    HttpExchange m_exchange;
    const Clock::time_point m_began = Clock::now();
    Received m_received;
    Ended m_ended;
    std::unique_ptr<curl_slist, FreeList> m_headerFields;
    HandshakeWatch m_handshake; // used by the handle, so it goes after it
    std::unique_ptr<CURL, FreeEasy> m_easy;
    std::string m_strUrl;          // of the latest request that went out
    std::string m_strEffectiveUrl; // the one that a redirect led to last; "" while the handle works
    int m_nPeerPort = 0;           // of the latest connection that was opened
    TransferFacts m_facts;
    std::string m_bytes;
    std::size_t m_nTotal = 0;
    Clock::time_point m_lastArrival;
};

} // namespace vellux
