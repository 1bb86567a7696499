#include "adapters/curl/CurlTransfer.h"

#include "adapters/curl/CurlExchange.h"
#include "adapters/curl/CurlPolicy.h"
#include "adapters/curl/CurlProxy.h"
#include "support/Text.h"

#include <netinet/in.h>
#include <sys/socket.h>

#include <new>
#include <utility>

namespace vellux {

namespace {

constexpr std::size_t kLargestBody = std::size_t{16} * 1024 * 1024;
constexpr std::chrono::milliseconds kSilence{100};
constexpr long kMostRedirects = 20;
constexpr long kOldestIdleConnection = 60; // seconds; servers and firewalls drop them silently
constexpr const char* kProtocols = "http,https";
constexpr const char* kSafeProtocols = "https"; // a password must not be sent again in clear

// For curl "Name;" is a field without a value; "Name:" removes the field.
std::string fieldLine(const std::string& strName, const std::string& strValue) {
    const bool bBlank = strValue.find_first_not_of(" \t") == std::string::npos;
    return bBlank ? strName + ";" : strName + ": " + strValue;
}

HttpError cancelled() {
    return {"cancelled", HttpFailure::Cancelled};
}

} // namespace

CurlTransfer::CurlTransfer(HttpRequest request, Received received, Ended ended)
    : m_request(std::move(request)), m_received(std::move(received)), m_ended(std::move(ended)),
      m_strUrl(m_request.strUrl) {
    m_exchange.began = std::chrono::system_clock::now();
    m_exchange.strMethod = m_request.strMethod;
    m_exchange.bPoll = m_received != nullptr;
}

CurlTransfer::~CurlTransfer() = default;

std::optional<HttpError> CurlTransfer::accept(const CurlTransportOptions& options) {
    m_observer = options.observer;
    if (auto error = validate(m_request))
        return error;
    if (!options.bUseProxies)
        m_strProxy = "";
    else if (options.proxyOf)
        m_strProxy = options.proxyOf(m_request.strUrl, !hasField(m_request, "authorization"));
    return std::nullopt;
}

void CurlTransfer::tell(const std::optional<HttpError>& error) {
    const HttpExchangeObserver observer = std::exchange(m_observer, nullptr);
    if (!observer)
        return;
    setPlace(m_exchange, m_strUrl);
    m_exchange.duration = std::chrono::round<std::chrono::milliseconds>(Clock::now() - m_began);
    m_exchange.error = error;
    observer(m_exchange);
}

CURL* CurlTransfer::prepare(const CurlTransportOptions& options, CURLSH* share) {
    m_easy.reset(curl_easy_init());
    CURL* const easy = m_easy.get();
    if (easy == nullptr)
        return nullptr;

    curl_easy_setopt(easy, CURLOPT_PRIVATE, this);
    curl_easy_setopt(easy, CURLOPT_SHARE, share);
    curl_easy_setopt(easy, CURLOPT_COOKIEFILE, ""); // on, none read from a file; kept-on-purpose:cookies
    curl_easy_setopt(easy, CURLOPT_URL, m_request.strUrl.c_str());
    curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
    curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, kProtocols);
    curl_easy_setopt(easy, CURLOPT_REDIR_PROTOCOLS_STR,
                     toLower(m_request.strUrl).starts_with("https:") ? kSafeProtocols : kProtocols);
    curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 1L);
    curl_easy_setopt(easy, CURLOPT_MAXREDIRS, kMostRedirects);
    curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, CURL_HTTP_VERSION_1_1);
    // A request's limit covers the whole transfer; a poll's only the time until the request goes out, which
    // curl divides among the host's addresses. CurlNetwork::watchSilence watches a poll's silence.
    curl_easy_setopt(easy, m_received ? CURLOPT_CONNECTTIMEOUT_MS : CURLOPT_TIMEOUT_MS,
                     static_cast<long>(m_request.timeout.count()));
    m_lastArrival = Clock::now();
    curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L); // a name look-up that hangs must not delay the end
    curl_easy_setopt(easy, CURLOPT_MAXAGE_CONN, kOldestIdleConnection);
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &CurlTransfer::onSocket);
    curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, this);
    curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &CurlTransfer::onConnected);
    curl_easy_setopt(easy, CURLOPT_PREREQDATA, this);
    curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &CurlTransfer::onHead);
    curl_easy_setopt(easy, CURLOPT_HEADERDATA, this);
    curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &CurlTransfer::onBytes);
    curl_easy_setopt(easy, CURLOPT_WRITEDATA, this);

    curl_easy_setopt(easy, CURLOPT_SSLVERSION, long{CURL_SSLVERSION_TLSv1_2}); // or newer
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYPEER, 1L);
    curl_easy_setopt(easy, CURLOPT_SSL_VERIFYHOST, 2L);
    m_handshake.attach(easy);
    if (const auto& strAuthorities = options.strTrustedAuthorities) {
        curl_blob blob{const_cast<char*>(strAuthorities->data()), strAuthorities->size(), CURL_BLOB_COPY};
        curl_easy_setopt(easy, CURLOPT_CAINFO_BLOB, &blob);
        curl_easy_setopt(easy, CURLOPT_CAPATH, nullptr); // these authorities and no others
    }
    if (m_strProxy)
        curl_easy_setopt(easy, CURLOPT_PROXY, m_strProxy->c_str());

    if (m_request.strBody) {
        curl_easy_setopt(easy, CURLOPT_POST, 1L);
        curl_easy_setopt(easy, CURLOPT_POSTFIELDS, m_request.strBody->c_str()); // not copied, lives as long
        curl_easy_setopt(easy, CURLOPT_POSTFIELDSIZE_LARGE,
                         static_cast<curl_off_t>(m_request.strBody->size()));
    }
    setHeaderFields();
    return easy;
}

void CurlTransfer::tellIfUnconnected(CURLcode code, const CurlTransportOptions& options) const {
    // Microseconds until the connection stood, handshake included; 0 when it never did.
    curl_off_t nReadyAfter = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_PRETRANSFER_TIME_T, &nReadyAfter);
    if (code != CURLE_OK && nReadyAfter == 0 && options.connectionFailed)
        options.connectionFailed(m_request.strUrl);
}

void CurlTransfer::release() {
    if (m_easy != nullptr)
        keepFacts();
    m_easy.reset();
}

// What only the handle knows.
void CurlTransfer::keepFacts() {
    readAnswer(m_exchange, m_easy.get());
    m_facts.nStatus = m_exchange.nStatus;
    m_facts.handshake = m_handshake.findings();
    long nConnectStatus = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_HTTP_CONNECTCODE, &nConnectStatus);
    m_facts.nConnectStatus = static_cast<int>(nConnectStatus);
    long nSystemError = 0;
    curl_easy_getinfo(m_easy.get(), CURLINFO_OS_ERRNO, &nSystemError);
    m_facts.nSystemError = static_cast<int>(nSystemError);
    const char* strUrl = nullptr;
    curl_easy_getinfo(m_easy.get(), CURLINFO_EFFECTIVE_URL, &strUrl);
    if (strUrl == nullptr)
        return;
    const std::string strProxy = proxyFor(strUrl, m_strProxy);
    m_facts.bToProxy = !strProxy.empty() && proxyPort(strProxy) == m_nPeerPort;
    m_facts.bToProxyByTls = toLower(strProxy).starts_with("https:");
    m_strEffectiveUrl = strUrl;
}

void CurlTransfer::setHeaderFields() {
    const auto append = [this](const std::string& strLine) {
        if (curl_slist* const list = curl_slist_append(m_headerFields.get(), strLine.c_str())) {
            static_cast<void>(m_headerFields.release()); // the same list, or the first entry of a new one
            m_headerFields.reset(list);
        }
    };
    HttpHeaderFields headerFields = m_request.headerFields;
    // curl writes this field itself, last and with this value, and drops it when a redirect turns the request
    // into one without a body.
    if (m_request.strBody && !headerFields.empty() &&
        headerFields.back() ==
            std::pair<std::string, std::string>("Content-Length", std::to_string(m_request.strBody->size())))
        headerFields.pop_back();
    for (const auto& [strName, strValue] : headerFields)
        append(fieldLine(strName, strValue));
    // Fields that curl would add by itself.
    for (const char* strOwn : {"Accept", "Expect", "Content-Type"})
        if (!hasField(m_request, toLower(strOwn)))
            append(std::string(strOwn) + ":");
    curl_easy_setopt(m_easy.get(), CURLOPT_HTTPHEADER, m_headerFields.get());
}

// Called for each address that is tried. The socket is not inherited by programs that the desktop starts for
// us, such as the browser.
curl_socket_t CurlTransfer::onSocket(void* self, curlsocktype, curl_sockaddr* address) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    transfer.m_facts.bConnected = false;
    // At the same place for both families.
    const auto* const port = reinterpret_cast<const sockaddr_in*>(&address->addr);
    transfer.m_nPeerPort = ntohs(port->sin_port);
    return socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
}

// Called before each request of the transfer goes out, including redirected ones.
int CurlTransfer::onConnected(void* self, char*, char*, int, int) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const char* strUrl = nullptr;
    curl_easy_getinfo(transfer.handle(), CURLINFO_EFFECTIVE_URL, &strUrl);
    if (strUrl == nullptr || !mayGoTo(transfer.m_request, strUrl))
        return CURL_PREREQFUNC_ABORT;
    try {
        transfer.m_strUrl = strUrl;
    } catch (const std::bad_alloc&) { // no exception may cross the library that calls
        return CURL_PREREQFUNC_ABORT;
    }
    transfer.m_facts.bConnected = true;
    return CURL_PREREQFUNC_OK;
}

std::size_t CurlTransfer::onHead(char*, std::size_t nSize, std::size_t nCount, void* self) {
    static_cast<CurlTransfer*>(self)->m_lastArrival = Clock::now();
    return nSize * nCount;
}

std::size_t CurlTransfer::onBytes(char* bytes, std::size_t nSize, std::size_t nCount, void* self) {
    auto& transfer = *static_cast<CurlTransfer*>(self);
    const std::size_t nBytes = nSize * nCount;
    if (nBytes > kLargestBody - transfer.m_nTotal) {
        transfer.m_facts.bTooLarge = true;
        return 0; // anything but nBytes ends the transfer
    }
    try {
        transfer.m_bytes.append(bytes, nBytes);
    } catch (const std::bad_alloc&) { // no exception may cross the library that calls
        return 0;
    }
    transfer.m_nTotal += nBytes;
    transfer.m_lastArrival = Clock::now();
    return nBytes;
}

CurlTransfer::Clock::time_point CurlTransfer::gatheredDue() const {
    return m_received && !m_bytes.empty() ? m_lastArrival + kSilence : kNever;
}

CurlTransfer::Clock::time_point CurlTransfer::silenceDue() const {
    return m_received ? m_lastArrival + m_request.timeout : kNever;
}

void CurlTransfer::flush() {
    if (m_received && !m_bytes.empty())
        m_received(std::exchange(m_bytes, {}));
}

void CurlTransfer::end(CURLcode code) {
    if (code == CURLE_OK) {
        finish(std::nullopt);
        return;
    }
    const HttpError error = failureOf(code, m_facts);
    // A failure on the way to where a redirect leads is that place's; a refusal to go there is not.
    if (error.failure != HttpFailure::RedirectRefused && !m_strEffectiveUrl.empty())
        m_strUrl = m_strEffectiveUrl;
    finish(error);
}

void CurlTransfer::finish(std::optional<HttpError> error) {
    tell(error);
    flush();
    HttpResponse answer;
    // An answer without content has an empty body; a failure without content has none.
    if (!error || m_nTotal > 0)
        answer.strBody = std::move(m_bytes);
    answer.error = std::move(error);
    m_received = nullptr;
    std::exchange(m_ended, nullptr)(std::move(answer));
}

void CurlTransfer::abandon() {
    tell(cancelled());
    m_received = nullptr;
    m_ended = nullptr;
}

void CurlTransfer::close() {
    if (m_received)
        abandon();
    else
        finish(cancelled());
}

} // namespace vellux
