#include "adapters/curl/HandshakeWatch.h"

#include <openssl/ssl.h>
#include <openssl/x509.h>

#include <algorithm>
#include <new>

namespace vellux {

namespace {

using FindingsRef = std::shared_ptr<HandshakeFindings>;

constexpr std::size_t kLongestName = 200; // bytes; a certificate may name anything

void freeFindings(void*, void* findings, CRYPTO_EX_DATA*, int, long, void*) {
    delete static_cast<FindingsRef*>(findings);
}

// Where a context keeps its findings; -1 when OpenSSL has no room.
int findingsIndex() {
    static const int nIndex =
        CRYPTO_get_ex_new_index(CRYPTO_EX_INDEX_SSL_CTX, 0, nullptr, nullptr, nullptr, freeFindings);
    return nIndex;
}

HandshakeFindings& findingsOf(const SSL* ssl) {
    return **static_cast<FindingsRef*>(SSL_CTX_get_ex_data(SSL_get_SSL_CTX(ssl), findingsIndex()));
}

// As UTF-8 without control characters; "" when the name has no such entry.
std::string entry(const X509_NAME* name, int nKind) {
    const int nPosition = X509_NAME_get_index_by_NID(name, nKind, -1);
    unsigned char* bytes = nullptr;
    const int nBytes =
        nPosition < 0
            ? -1
            : ASN1_STRING_to_UTF8(&bytes, X509_NAME_ENTRY_get_data(X509_NAME_get_entry(name, nPosition)));
    if (nBytes < 0)
        return "";
    std::string strEntry(reinterpret_cast<const char*>(bytes), static_cast<std::size_t>(nBytes));
    OPENSSL_free(bytes);
    std::erase_if(strEntry, [](unsigned char by) { return by < ' ' || by == 0x7f; });
    const auto isContinued = [](unsigned char by) { return (by & 0xc0) == 0x80; };
    if (strEntry.size() > kLongestName) {
        std::size_t nEnd = kLongestName;
        while (nEnd > 0 && isContinued(static_cast<unsigned char>(strEntry[nEnd])))
            --nEnd;
        strEntry.resize(nEnd);
    }
    return strEntry;
}

void noteIssuer(HandshakeFindings& findings, const X509* certificate) {
    if (certificate == nullptr)
        return;
    const X509_NAME* const issuer = X509_get_issuer_name(certificate);
    findings.strIssuer = entry(issuer, NID_commonName);
    if (findings.strIssuer.empty())
        findings.strIssuer = entry(issuer, NID_organizationName);
}

// Called for each certificate of the chain, with 0 for what is wrong with it. The verdict goes back as it
// came: this only looks on.
int onVerify(int nVerdict, X509_STORE_CTX* store) {
    if (nVerdict != 0)
        return nVerdict;
    HandshakeFindings& findings = findingsOf(
        static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(store, SSL_get_ex_data_X509_STORE_CTX_idx())));
    findings.nVerifyError = X509_STORE_CTX_get_error(store);
    try {
        noteIssuer(findings, X509_STORE_CTX_get_current_cert(store));
    } catch (const std::bad_alloc&) { // no exception may cross the library that calls
    }
    return nVerdict;
}

// Called for each alert and at the end of a handshake. The alert about versions comes from a server that
// refuses ours, or goes to one that chose another. When a handshake takes up an earlier session, onVerify is
// not called.
void onInfo(const SSL* ssl, int nWhere, int nValue) {
    constexpr int kDescription = 0xff;
    if ((nWhere & SSL_CB_ALERT) != 0 && (nValue & kDescription) == SSL_AD_PROTOCOL_VERSION)
        findingsOf(ssl).bTooOld = true;
    if ((nWhere & SSL_CB_HANDSHAKE_DONE) == 0)
        return;
    try {
        noteIssuer(findingsOf(ssl), SSL_get0_peer_certificate(ssl));
    } catch (const std::bad_alloc&) { // as above
    }
}

} // namespace

void HandshakeWatch::attach(CURL* easy) {
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_FUNCTION, &HandshakeWatch::onContext);
    curl_easy_setopt(easy, CURLOPT_SSL_CTX_DATA, this);
}

HandshakeFindings HandshakeWatch::findings() const {
    return m_findings == nullptr ? HandshakeFindings{} : *m_findings;
}

// Called when a new connection's context has been set up. Without room for findings there are none.
CURLcode HandshakeWatch::onContext(CURL*, void* context, void* self) {
    auto* const tls = static_cast<SSL_CTX*>(context);
    try {
        auto findings = std::make_shared<HandshakeFindings>();
        auto reference = std::make_unique<FindingsRef>(findings);
        if (SSL_CTX_set_ex_data(tls, findingsIndex(), reference.get()) != 1)
            return CURLE_OK;
        static_cast<void>(reference.release()); // the context's
        static_cast<HandshakeWatch*>(self)->m_findings = std::move(findings);
    } catch (const std::bad_alloc&) {
        return CURLE_OK;
    }
    SSL_CTX_set_verify(tls, SSL_CTX_get_verify_mode(tls), onVerify);
    SSL_CTX_set_info_callback(tls, onInfo);
    return CURLE_OK;
}

} // namespace vellux
