// What is told of an exchange: nothing that is secret, nothing that a server could smuggle in.
#pragma once

#include "ports/HttpExchange.h"

#include <curl/curl.h>

#include <string>
#include <string_view>
#include <vector>

namespace vellux {

/// Sets host and path to those of a URL; both become "" for one that is malformed. Any thread.
void setPlace(HttpExchange& exchange, const std::string& strUrl);

/// Sets status, content type and schemes to those of the handle's last answer. On the handle's thread.
void readAnswer(HttpExchange& exchange, CURL* easy);

/// The schemes that the value of a WWW-Authenticate field names, in its order. Any thread.
[[nodiscard]] std::vector<std::string> authenticationSchemes(std::string_view strValue);

} // namespace vellux
