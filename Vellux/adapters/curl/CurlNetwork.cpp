#include "adapters/curl/CurlNetwork.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace vellux {

namespace {

constexpr std::chrono::milliseconds kBreath{100};
constexpr std::chrono::hours kIdleTimeout{1}; // curl shortens it to its own timers

// Null when curl can't make one. Used by the network thread alone, so no lock functions.
CURLSH* makeShare() {
    CURLSH* const share = curl_share_init();
    curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_COOKIE);
    curl_share_setopt(share, CURLSHOPT_SHARE, CURL_LOCK_DATA_SSL_SESSION);
    return share;
}

} // namespace

CurlNetwork::CurlNetwork(CurlTransportOptions options) : m_options(std::move(options)) {}

CurlNetwork::~CurlNetwork() = default;

// Under the lock, until it has succeeded. What can't be created now is tried again with the next transfer.
bool CurlNetwork::makeThread() {
    if (curl_global_init(CURL_GLOBAL_DEFAULT) != CURLE_OK) // again does nothing
        return false;
    m_share.reset(makeShare());
    m_multi.reset(curl_multi_init());
    // Without a free descriptor curl still creates a handle, but nothing could wake its poll.
    if (m_share == nullptr || m_multi == nullptr || curl_multi_wakeup(m_multi.get()) != CURLM_OK)
        return false;
    try {
        m_thread = std::thread([this] { run(); });
    } catch (const std::exception&) {
        return false;
    }
    return true;
}

// Under the lock, and not after close(): the multi handle still exists if it was created.
void CurlNetwork::wakeUp() {
    if (m_multi != nullptr)
        curl_multi_wakeup(m_multi.get());
}

std::optional<HttpError> CurlNetwork::start(const std::shared_ptr<CurlTransfer>& transfer) {
    std::optional<HttpError> error = transfer->accept(m_options);
    if (!error)
        error = enqueue(transfer);
    if (error)
        transfer->tell(error);
    return error;
}

std::optional<HttpError> CurlNetwork::enqueue(const std::shared_ptr<CurlTransfer>& transfer) {
    const ScopedLock lock(m_mutex);
    if (m_bClosed)
        return HttpError{"closed", HttpFailure::Cancelled};
    if (!m_thread.joinable() && !makeThread())
        return HttpError{"no descriptor, thread or memory left"};
    m_starting.push_back(transfer);
    wakeUp();
    return std::nullopt;
}

void CurlNetwork::cancel(const std::shared_ptr<CurlTransfer>& transfer) {
    const ScopedLock lock(m_mutex);
    if (m_bClosed)
        return;
    m_cancelled.push_back(transfer);
    wakeUp();
}

void CurlNetwork::close() {
    const ScopedLock lock(m_mutex);
    if (m_bClosed)
        return;
    m_bClosed = true;
    wakeUp();
}

bool CurlNetwork::isClosed() {
    const ScopedLock lock(m_mutex);
    return m_bClosed;
}

void CurlNetwork::stop() {
    close();
    if (m_thread.joinable()) // after close() nobody starts it any more
        m_thread.join();
    m_multi.reset();
    m_share.reset();
}

void CurlNetwork::run() {
    while (takePending()) {
        int nRunning = 0;
        curl_multi_perform(m_multi.get(), &nRunning);
        finishDone();
        const int nTimeout = watchSilence();
        if (curl_multi_poll(m_multi.get(), nullptr, 0, nTimeout, nullptr) != CURLM_OK)
            std::this_thread::sleep_for(kBreath); // out of memory: don't spin
    }
    // Closed: takePending has begun what was waiting to be started, so that everything ends here.
    while (!m_running.empty()) {
        const std::shared_ptr<CurlTransfer> transfer = m_running.back();
        drop(transfer);
        transfer->close();
    }
}

// Starts and cancels what was asked for; false when the network is to close.
bool CurlNetwork::takePending() {
    Transfers starting;
    Transfers cancelled;
    bool bClosed = false;
    {
        const ScopedLock lock(m_mutex);
        starting.swap(m_starting);
        cancelled.swap(m_cancelled);
        bClosed = m_bClosed;
    }
    for (const auto& transfer : starting)
        begin(transfer);
    for (const auto& transfer : cancelled) {
        drop(transfer);
        transfer->abandon();
    }
    return !bClosed;
}

void CurlNetwork::begin(const std::shared_ptr<CurlTransfer>& transfer) {
    CURL* const easy = transfer->prepare(m_options, m_share.get());
    if (easy == nullptr || curl_multi_add_handle(m_multi.get(), easy) != CURLM_OK) {
        transfer->release();
        transfer->end(CURLE_FAILED_INIT);
        return;
    }
    m_running.push_back(transfer);
}

void CurlNetwork::finishDone() {
    int nLeft = 0;
    while (const CURLMsg* const message = curl_multi_info_read(m_multi.get(), &nLeft)) {
        if (message->msg != CURLMSG_DONE)
            continue;
        const CURLcode code = message->data.result;
        const auto found =
            std::find_if(m_running.begin(), m_running.end(),
                         [easy = message->easy_handle](const auto& each) { return each->handle() == easy; });
        if (found == m_running.end())
            continue;
        const std::shared_ptr<CurlTransfer> transfer = *found;
        transfer->tellIfUnconnected(code, m_options);
        drop(transfer); // first, so that its connection is free for requests that the end sets off
        transfer->end(code);
    }
}

void CurlNetwork::drop(const std::shared_ptr<CurlTransfer>& transfer) {
    if (std::erase(m_running, transfer) == 0)
        return;
    curl_multi_remove_handle(m_multi.get(), transfer->handle());
    transfer->release();
}

// Delivers gathered bytes that are due, and ends transfers that have been silent for too long. Returns the
// milliseconds until the next of either is due.
int CurlNetwork::watchSilence() {
    const auto now = CurlTransfer::Clock::now();
    auto next = now + kIdleTimeout;
    Transfers silent;
    for (const auto& transfer : m_running) {
        if (transfer->silenceDue() <= now)
            silent.push_back(transfer); // its end delivers what is left
        else if (transfer->gatheredDue() <= now)
            transfer->flush();
        next = std::min({next, transfer->silenceDue(), transfer->gatheredDue()});
    }
    for (const auto& transfer : silent) {
        drop(transfer);
        transfer->end(CURLE_OPERATION_TIMEDOUT);
    }
    return static_cast<int>(std::max(std::chrono::ceil<std::chrono::milliseconds>(next - now).count(), 0L));
}

} // namespace vellux
