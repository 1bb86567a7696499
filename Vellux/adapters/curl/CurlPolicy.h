// What is never sent, whatever a caller or a server's answer asks for.
#pragma once

#include "ports/HttpTransport.h"

#include <optional>
#include <string>

namespace vellux {

/// Why the request must not be sent at all; absent when it may. A URL that can't be formed, without a host or
/// with user information; a header field with a line break or a zero byte in it, which would become another
/// request than the one that was meant; a credential bound for another place than its own, or one of which
/// nobody says where it belongs. Any thread.
std::optional<HttpError> validate(const HttpRequest& request);

/// Whether the request may go to this URL, its own or one that a redirect leads to: anywhere without user
/// information, but with a body or a credential to the scheme, host and port of its own URL alone. Any
/// thread.
bool mayGoTo(const HttpRequest& request, const std::string& strUrl);

/// Whether the request has the field. `strName` is in lower case.
bool hasField(const HttpRequest& request, std::string_view strName);

} // namespace vellux
