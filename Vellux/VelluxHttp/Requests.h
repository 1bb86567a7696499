// The conventions that all synchronous requests of the presence client share.
#pragma once

#include "ports/HttpTransport.h"

#include <optional>
#include <string>

namespace vellux {

/// A GET without a body, 30 seconds at most. `strCredentialOrigin` as for an HttpRequest.
HttpRequest getRequest(std::string strUrl, HttpHeaderFields headerFields,
                       std::optional<std::string> strCredentialOrigin = {});

/// A POST with the body's byte count as its last header field, "Content-Length"; 30 seconds at most.
HttpRequest postRequest(std::string strUrl, HttpHeaderFields headerFields, std::string strBody,
                        std::optional<std::string> strCredentialOrigin);

/// Performs the exchange; the body when one came and nothing went wrong, else absent. Blocks.
std::optional<std::string> exchange(const HttpRequest& request);

/// The same, but tells the user when the server can't be reached, and waits for the dismissal.
std::optional<std::string> exchangeOrAlert(const HttpRequest& request);

} // namespace vellux
