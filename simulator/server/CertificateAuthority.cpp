#include "server/CertificateAuthority.h"

#include <openssl/bio.h>
#include <openssl/ec.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstdint>
#include <initializer_list>

namespace vellux::simulator {

namespace {

constexpr long kClockSlack = 60L * 60; // s; valid from an hour ago
constexpr long kVersion3 = 2;          // as X.509 counts

struct Extension {
    int nID;
    const char* strValue;
};

// What a certificate is made from; the issuer is null for one that signs itself.
struct Request {
    const char* strCommonName;
    std::initializer_list<Extension> extensions;
    const Identity* issuer;
    std::chrono::seconds validity = CertificateAuthority::kLifetime;
};

bool setRandomSerial(X509* certificate) {
    std::int64_t nSerial = 0;
    if (RAND_bytes(reinterpret_cast<unsigned char*>(&nSerial), sizeof nSerial) != 1)
        return false;
    constexpr std::int64_t kPositive = INT64_MAX;
    return ASN1_INTEGER_set_int64(X509_get_serialNumber(certificate), nSerial & kPositive) == 1;
}

bool setName(X509_NAME* name, const char* strCommonName) {
    return X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                      reinterpret_cast<const unsigned char*>(strCommonName), -1, -1, 0) == 1;
}

bool addExtension(X509* certificate, X509* issuer, const Extension& extension) {
    X509V3_CTX context;
    X509V3_set_ctx_nodb(&context);
    X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
    X509_EXTENSION* const made = X509V3_EXT_conf_nid(nullptr, &context, extension.nID, extension.strValue);
    if (made == nullptr)
        return false;
    const bool bAdded = X509_add_ext(certificate, made, -1) == 1;
    X509_EXTENSION_free(made);
    return bAdded;
}

std::optional<Identity> make(const Request& request) {
    Identity made{CertificateRef(X509_new()), KeyRef(EVP_EC_gen("P-256"))};
    X509* const certificate = made.certificate.get();
    if (certificate == nullptr || made.key == nullptr)
        return std::nullopt;
    const Identity& issuer = request.issuer == nullptr ? made : *request.issuer;

    const bool bFilled =
        X509_set_version(certificate, kVersion3) == 1 && setRandomSerial(certificate) &&
        X509_gmtime_adj(X509_getm_notBefore(certificate), -kClockSlack) != nullptr &&
        X509_gmtime_adj(X509_getm_notAfter(certificate), request.validity.count()) != nullptr &&
        X509_set_pubkey(certificate, made.key.get()) == 1 &&
        setName(X509_get_subject_name(certificate), request.strCommonName) &&
        X509_set_issuer_name(certificate, X509_get_subject_name(issuer.certificate.get())) == 1;
    if (!bFilled)
        return std::nullopt;
    for (const Extension& extension : request.extensions)
        if (!addExtension(certificate, issuer.certificate.get(), extension))
            return std::nullopt;
    if (X509_sign(certificate, issuer.key.get(), EVP_sha256()) <= 0)
        return std::nullopt;
    return made;
}

} // namespace

void OpenSslDelete::operator()(X509* certificate) const {
    X509_free(certificate);
}

void OpenSslDelete::operator()(EVP_PKEY* key) const {
    EVP_PKEY_free(key);
}

std::optional<CertificateAuthority> CertificateAuthority::create() {
    std::optional<Identity> own = make({"Presence simulator authority",
                                        {{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
                                         {NID_key_usage, "critical,keyCertSign,cRLSign"},
                                         {NID_subject_key_identifier, "hash"}},
                                        nullptr});
    if (!own)
        return std::nullopt;
    return CertificateAuthority(std::move(*own));
}

std::string CertificateAuthority::pem() const {
    BIO* const memory = BIO_new(BIO_s_mem());
    std::string strText;
    if (memory != nullptr && PEM_write_bio_X509(memory, m_own.certificate.get()) == 1) {
        char* bytes = nullptr;
        const long nBytes = BIO_get_mem_data(memory, &bytes);
        strText.assign(bytes, static_cast<std::size_t>(nBytes));
    }
    BIO_free(memory);
    return strText;
}

std::optional<Identity> CertificateAuthority::issueServerIdentity(const char* strNames,
                                                                  std::chrono::seconds validity) const {
    return make({"localhost",
                 {{NID_basic_constraints, "critical,CA:FALSE"},
                  {NID_key_usage, "critical,digitalSignature"},
                  {NID_ext_key_usage, "serverAuth"},
                  {NID_subject_alt_name, strNames},
                  {NID_authority_key_identifier, "keyid"}},
                 &m_own,
                 validity});
}

std::optional<Identity> CertificateAuthority::createSelfSigned() {
    return make({"localhost", {{NID_subject_alt_name, kLoopbackNames}}, nullptr});
}

} // namespace vellux::simulator
