// What a transport tells of each exchange to whoever keeps a log of them.
#pragma once

#include "ports/HttpTransport.h"

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellux {

/// A finished exchange, as people may read and pass it on. Holds no header value but the two named here,
/// no query, no body and no credential.
struct HttpExchange {
    std::chrono::system_clock::time_point began;
    std::chrono::milliseconds duration{0};
    std::string strMethod;
    /// Where the exchange ended, behind all redirects: with the port, unless it is the scheme's own. "" for a
    /// URL that is malformed.
    std::string strHost;
    std::string strPath;        ///< of the same URL, without the query
    bool bPoll = false;         ///< asynchronous
    int nStatus = 0;            ///< of the last answer; 0 for none
    std::string strContentType; ///< of that answer, without parameters; "" when it names none
    /// The schemes that WWW-Authenticate fields name ("Negotiate", "NTLM"), in their order, without
    /// parameters.
    std::vector<std::string> authenticationSchemes;
    std::optional<HttpError> error; ///< absent on success
};

/// Called once for each request, also for one that was cancelled or is not sent, before its caller learns of
/// the result, on whichever thread ends it: it must not block.
using HttpExchangeObserver = std::function<void(const HttpExchange&)>;

} // namespace vellux
