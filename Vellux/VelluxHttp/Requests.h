// The conventions that all synchronous requests of the presence client share.
#pragma once

#include "ports/HttpTransport.h"

#include <optional>
#include <string>

namespace vellux {

/// A GET without a body and a timeout of 30 s. `strCredentialOrigin` as for an HttpRequest.
HttpRequest getRequest(std::string strUrl, HttpHeaderFields headerFields,
                       std::optional<std::string> strCredentialOrigin = {});

/// A POST with a timeout of 30 s and the body's byte count as its last header field, "Content-Length".
HttpRequest postRequest(std::string strUrl, HttpHeaderFields headerFields, std::string strBody,
                        std::optional<std::string> strCredentialOrigin);

/// Performs the exchange; returns the body, or absent when there was none or an error occurred. Blocks for up
/// to request.timeout.
[[nodiscard]] std::optional<std::string> exchange(const HttpRequest& request);

/// The same, but on failure shows an alert that the server can't be reached, and waits until it is dismissed.
[[nodiscard]] std::optional<std::string> exchangeOrAlert(const HttpRequest& request);

} // namespace vellux
