#include "support/Url.h"

#include "support/Text.h"

#include <algorithm>
#include <arpa/inet.h>
#include <string>

namespace vellux {

namespace {

bool isDigit(char c) {
    return c >= '0' && c <= '9';
}
bool isHexDigit(char c) {
    return isDigit(c) || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}
bool isLetter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

// unreserved / gen-delims / sub-delims (RFC 3986, section 2); brackets belong to an address alone
bool isAllowed(char c) {
    return isLetter(c) || isDigit(c) ||
           std::string_view("-._~:/?#@!$&'()*+,;=%").find(c) != std::string_view::npos;
}

bool isPort(std::string_view strPort) {
    return strPort.size() <= 5 && std::all_of(strPort.begin(), strPort.end(), isDigit) &&
           integerValue(strPort) <= 65535;
}

// Nothing but allowed characters, and complete "%" escapes.
bool isText(std::string_view strText) {
    for (std::size_t n = 0; n < strText.size(); ++n) {
        if (!isAllowed(strText[n]))
            return false;
        if (strText[n] == '%' &&
            (n + 2 >= strText.size() || !isHexDigit(strText[n + 1]) || !isHexDigit(strText[n + 2])))
            return false;
    }
    return true;
}

// "", or ":" and a port.
bool isPortPart(std::string_view strText) {
    return strText.empty() || (strText.front() == ':' && isPort(strText.substr(1)));
}

bool isIpv6Address(std::string_view strText) {
    in6_addr address{};
    return strText.find('\0') == std::string_view::npos &&
           inet_pton(AF_INET6, std::string(strText).c_str(), &address) == 1;
}

// A name or an IPv4 address, or an IPv6 address in brackets, whose own colons are not a port's; then the
// port.
bool isHostAndPort(std::string_view strText) {
    if (!strText.starts_with('['))
        return isText(strText) && isPortPart(strText.substr(std::min(strText.find(':'), strText.size())));
    const std::size_t nBracket = strText.find(']');
    return nBracket != std::string_view::npos && isIpv6Address(strText.substr(1, nBracket - 1)) &&
           isPortPart(strText.substr(nBracket + 1));
}

} // namespace

bool isHttpUrl(std::string_view strText) {
    const std::size_t nColon = strText.find("://");
    if (nColon == std::string_view::npos)
        return false;
    const std::string strScheme = toLower(strText.substr(0, nColon));
    if (strScheme != "https" && strScheme != "http")
        return false;

    const std::string_view strRest = strText.substr(nColon + 3);
    const std::size_t nPath = std::min(strRest.find_first_of("/?#"), strRest.size());
    const std::string_view strAuthority = strRest.substr(0, nPath);
    const std::string_view strPath = strRest.substr(nPath);
    const std::size_t nAt = strAuthority.rfind('@');
    const std::size_t nHost = nAt == std::string_view::npos ? 0 : nAt + 1;
    return isText(strAuthority.substr(0, nHost)) && isHostAndPort(strAuthority.substr(nHost)) &&
           isText(strPath) && std::count(strPath.begin(), strPath.end(), '#') <= 1;
}

} // namespace vellux
