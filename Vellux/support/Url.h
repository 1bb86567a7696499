// Whether a text is a URL that can be requested.
#pragma once

#include <string_view>

namespace vellux {

/// Whether an absolute http or https URL can be formed from the text: only characters that RFC 3986 allows
/// (so no blanks, no controls, nothing beyond ASCII), every "%" followed by two hexadecimal digits, and a
/// port, if there is one, of digits up to 65535; brackets only around an IPv6 address, and one "#" at most.
/// An empty host counts as formable; no server answers at it.
bool isHttpUrl(std::string_view strText);

} // namespace vellux
