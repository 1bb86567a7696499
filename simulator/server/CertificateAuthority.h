// A certificate authority of this process's own, and the server certificate that it vouches for.
#pragma once

#include <openssl/types.h>

#include <chrono>
#include <memory>
#include <optional>
#include <string>

namespace vellux::simulator {

/// Frees what OpenSSL allocated.
struct OpenSslDelete {
    void operator()(X509* certificate) const;
    void operator()(EVP_PKEY* key) const;
};
using CertificateRef = std::unique_ptr<X509, OpenSslDelete>;
using KeyRef = std::unique_ptr<EVP_PKEY, OpenSslDelete>;

/// A certificate with its private key.
struct Identity {
    CertificateRef certificate;
    KeyRef key;
};

/// Lives in memory alone: nobody but those who are handed its PEM text trusts it, and it ends with the
/// process. Any thread.
class CertificateAuthority {
public:
    static constexpr const char* kLoopbackNames = "DNS:localhost,IP:127.0.0.1";
    static constexpr std::chrono::hours kLifetime{24};

    /// Makes a new authority (ECDSA on P-256, valid for a day). Absent when OpenSSL can't.
    static std::optional<CertificateAuthority> create();

    /// The authority's certificate as PEM text, for a client's trust store.
    std::string pem() const;

    /// Issues a certificate for some names, valid from an hour ago until `validity` from now. Absent when
    /// OpenSSL can't.
    std::optional<Identity> issueServerIdentity(const char* strNames = kLoopbackNames,
                                                std::chrono::seconds validity = kLifetime) const;
    /// One for the loopback names that nobody vouches for but itself. Absent when OpenSSL can't.
    static std::optional<Identity> createSelfSigned();

private:
    explicit CertificateAuthority(Identity own) : m_own(std::move(own)) {}

    Identity m_own;
};

} // namespace vellux::simulator
