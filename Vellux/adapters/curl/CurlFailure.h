// What kind of failure curl's error is.
#pragma once

#include "adapters/curl/HandshakeWatch.h"
#include "ports/HttpTransport.h"

#include <curl/curl.h>

namespace vellux {

/// What a transfer knows at its end, beside curl's error.
struct TransferFacts {
    bool bConnected = false;    ///< the latest connection stood, TLS handshake included
    bool bTooLarge = false;     ///< ended since its body is
    int nStatus = 0;            ///< of the last answer; 0 for none
    bool bToProxy = false;      ///< the latest connection goes to a proxy
    bool bToProxyByTls = false; ///< and is itself encrypted
    int nConnectStatus = 0;     ///< of a proxy's answer to CONNECT; 0 for none
    int nSystemError = 0;       ///< errno of a connection that failed
    HandshakeFindings handshake{};
};

/// The failure that `code`, which is not CURLE_OK, and the facts amount to. Any thread.
[[nodiscard]] HttpError failureOf(CURLcode code, const TransferFacts& facts);

} // namespace vellux
