#include "adapters/curl/CurlFailure.h"

#include <openssl/x509_vfy.h>

#include <algorithm>
#include <cerrno>
#include <iterator>

namespace vellux {

namespace {

constexpr struct {
    CURLcode code;
    HttpFailure failure;
} kFailures[] = {
    {CURLE_COULDNT_RESOLVE_HOST, HttpFailure::NameNotFound},
    {CURLE_COULDNT_RESOLVE_PROXY, HttpFailure::Proxy},
    {CURLE_PROXY, HttpFailure::Proxy},
    {CURLE_COULDNT_CONNECT, HttpFailure::Refused},
    {CURLE_GOT_NOTHING, HttpFailure::Reset},
    {CURLE_SEND_ERROR, HttpFailure::Reset},
    {CURLE_RECV_ERROR, HttpFailure::Reset},
    {CURLE_PARTIAL_FILE, HttpFailure::Reset},
    {CURLE_SSL_CONNECT_ERROR, HttpFailure::TlsFailed},
    {CURLE_SSL_ENGINE_NOTFOUND, HttpFailure::TlsFailed},
    {CURLE_SSL_ENGINE_SETFAILED, HttpFailure::TlsFailed},
    {CURLE_SSL_CERTPROBLEM, HttpFailure::TlsFailed},
    {CURLE_SSL_CIPHER, HttpFailure::TlsFailed},
    {CURLE_USE_SSL_FAILED, HttpFailure::TlsFailed},
    {CURLE_SSL_CACERT_BADFILE, HttpFailure::TlsFailed},
    {CURLE_SSL_SHUTDOWN_FAILED, HttpFailure::TlsFailed},
    {CURLE_SSL_CRL_BADFILE, HttpFailure::TlsFailed},
    {CURLE_SSL_ISSUER_ERROR, HttpFailure::TlsFailed},
    {CURLE_SSL_PINNEDPUBKEYNOTMATCH, HttpFailure::TlsFailed},
    {CURLE_SSL_INVALIDCERTSTATUS, HttpFailure::TlsFailed},
    {CURLE_SSL_CLIENTCERT, HttpFailure::TlsFailed},
    {CURLE_ABORTED_BY_CALLBACK, HttpFailure::RedirectRefused}, // nothing else aborts
};

// A chain that is in order and refused all the same is for another name: curl compares names itself.
HttpFailure certificateFailure(int nVerifyError) {
    switch (nVerifyError) {
    case X509_V_OK:
    case X509_V_ERR_HOSTNAME_MISMATCH:
    case X509_V_ERR_IP_ADDRESS_MISMATCH:
        return HttpFailure::CertificateOtherName;
    case X509_V_ERR_CERT_HAS_EXPIRED:
    case X509_V_ERR_CERT_NOT_YET_VALID:
        return HttpFailure::CertificateExpired;
    default:
        return HttpFailure::CertificateUntrusted;
    }
}

// As if there were no proxy.
HttpFailure kindOf(CURLcode code, const TransferFacts& facts) {
    constexpr int kRedirects = 3; // hundred and so on
    switch (code) {
    case CURLE_OPERATION_TIMEDOUT:
        return facts.bConnected ? HttpFailure::Silent : HttpFailure::NoAnswer;
    case CURLE_PEER_FAILED_VERIFICATION:
        return certificateFailure(facts.handshake.nVerifyError);
    case CURLE_UNSUPPORTED_PROTOCOL: // said of bytes that are no HTTP, too
    case CURLE_URL_MALFORMAT:
    case CURLE_TOO_MANY_REDIRECTS:
        return facts.nStatus / 100 == kRedirects ? HttpFailure::RedirectRefused : HttpFailure::Other;
    default:
        break;
    }
    if (code == CURLE_COULDNT_CONNECT && facts.nSystemError == ETIMEDOUT)
        return HttpFailure::NoAnswer;
    const auto* const found = std::find_if(std::begin(kFailures), std::end(kFailures),
                                           [code](const auto& row) { return row.code == code; });
    const HttpFailure failure = found == std::end(kFailures) ? HttpFailure::Other : found->failure;
    return failure == HttpFailure::TlsFailed && facts.handshake.bTooOld ? HttpFailure::TlsTooOld : failure;
}

// Whether it is the proxy that a connection failed at, or that refused to go on.
bool isProxysFault(HttpFailure failure, const TransferFacts& facts) {
    if (!facts.bToProxy || facts.bConnected || facts.nConnectStatus / 100 == 2)
        return false;
    switch (failure) {
    case HttpFailure::Refused:
    case HttpFailure::Reset:
        return true;
    case HttpFailure::CertificateUntrusted:
    case HttpFailure::CertificateExpired:
    case HttpFailure::CertificateOtherName:
    case HttpFailure::TlsTooOld:
    case HttpFailure::TlsFailed:
        return facts.bToProxyByTls;
    default:
        return false;
    }
}

bool isOfCertificate(HttpFailure failure) {
    return failure == HttpFailure::CertificateUntrusted || failure == HttpFailure::CertificateExpired ||
           failure == HttpFailure::CertificateOtherName;
}

} // namespace

HttpError failureOf(CURLcode code, const TransferFacts& facts) {
    if (facts.bTooLarge)
        return {"body too large", HttpFailure::TooLarge};
    const HttpFailure failure = kindOf(code, facts);
    if (isProxysFault(failure, facts))
        return {facts.nConnectStatus == 0
                    ? std::string(curl_easy_strerror(code))
                    : "the proxy answered CONNECT with " + std::to_string(facts.nConnectStatus),
                HttpFailure::Proxy};
    return {curl_easy_strerror(code), failure, isOfCertificate(failure) ? facts.handshake.strIssuer : ""};
}

} // namespace vellux
