// What is never sent, whatever a caller or a server's answer asks for.
#pragma once

#include "ports/HttpTransport.h"

#include <optional>
#include <string>

namespace vellux {

/// Why the request must not be sent; absent when it may. Refused are a URL that is malformed, has no host or
/// has user information; a header field with a line break or NUL, which could smuggle in another field or
/// request; and a credential that is bound for another origin than its own, or whose origin isn't given. Any
/// thread.
[[nodiscard]] std::optional<HttpError> validate(const HttpRequest& request);

/// Whether the request may be sent to this URL, its own or a redirect's: with a body or a credential only to
/// the scheme, host and port of its own URL, else to any URL without user information. Any thread.
[[nodiscard]] bool mayGoTo(const HttpRequest& request, const std::string& strUrl);

/// Whether the request has the field. `strName` is in lower case.
bool hasField(const HttpRequest& request, std::string_view strName);

} // namespace vellux
