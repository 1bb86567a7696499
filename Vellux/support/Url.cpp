#include "support/Url.h"

#include "support/Text.h"

#include <algorithm>

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

// unreserved / gen-delims / sub-delims (RFC 3986, section 2)
bool isAllowed(char c) {
    return isLetter(c) || isDigit(c) ||
           std::string_view("-._~:/?#[]@!$&'()*+,;=%").find(c) != std::string_view::npos;
}

bool isPort(std::string_view strPort) {
    return strPort.size() <= 5 && std::all_of(strPort.begin(), strPort.end(), isDigit) &&
           integerValue(strPort) <= 65535;
}

} // namespace

bool formsUrl(std::string_view strText) {
    for (std::size_t n = 0; n < strText.size(); ++n) {
        if (!isAllowed(strText[n]))
            return false;
        if (strText[n] == '%' &&
            (n + 2 >= strText.size() || !isHexDigit(strText[n + 1]) || !isHexDigit(strText[n + 2])))
            return false;
    }

    const std::size_t nColon = strText.find("://");
    if (nColon == std::string_view::npos)
        return false;
    const std::string strScheme = toLower(strText.substr(0, nColon));
    if (strScheme != "https" && strScheme != "http")
        return false;

    std::string_view strAuthority = strText.substr(nColon + 3);
    strAuthority = strAuthority.substr(0, strAuthority.find_first_of("/?#"));
    const std::size_t nAt = strAuthority.rfind('@');
    std::string_view strHostAndPort =
        nAt == std::string_view::npos ? strAuthority : strAuthority.substr(nAt + 1);
    if (strHostAndPort.starts_with('[')) { // an IPv6 address, whose own colons are inside the brackets
        const std::size_t nBracket = strHostAndPort.find(']');
        if (nBracket == std::string_view::npos)
            return false;
        const std::string_view strRest = strHostAndPort.substr(nBracket + 1);
        return strRest.empty() || (strRest.front() == ':' && isPort(strRest.substr(1)));
    }
    const std::size_t nPortColon = strHostAndPort.find(':');
    return nPortColon == std::string_view::npos || isPort(strHostAndPort.substr(nPortColon + 1));
}

} // namespace vellux
