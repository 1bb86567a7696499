// Why a TLS handshake failed, in more detail than curl tells.
#pragma once

#include <curl/curl.h>

#include <memory>
#include <string>

namespace vellux {

/// What one handshake showed. It decides nothing: OpenSSL's and curl's verdict stands.
struct HandshakeFindings {
    int nVerifyError = 0;    ///< OpenSSL's X509_V_ERR_..., of the certificate that was refused; 0 for none
    std::string strIssuer{}; ///< of that certificate, else of the server's own; "" when not known
    bool bTooOld = false;    ///< the server speaks no version of TLS that is allowed
};

/// Watches the handshakes of one transfer. Network thread.
class HandshakeWatch {
public:
    HandshakeWatch() = default;
    HandshakeWatch(const HandshakeWatch&) = delete;
    HandshakeWatch& operator=(const HandshakeWatch&) = delete;

    /// Makes the handle tell of its handshakes. It must not perform longer than this object lives;
    /// connections that it leaves behind may.
    void attach(CURL* easy);
    /// Of the latest handshake.
    HandshakeFindings findings() const;

private:
    static CURLcode onContext(CURL* easy, void* context, void* self);

    // Shared with the connection's TLS context: a server may shake hands again when the transfer is long
    // gone.
    std::shared_ptr<HandshakeFindings> m_findings;
};

} // namespace vellux
