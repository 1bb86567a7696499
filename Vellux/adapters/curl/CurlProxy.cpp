#include "adapters/curl/CurlProxy.h"

#include "adapters/curl/CurlUrl.h"
#include "support/Text.h"

#include <cstdlib>
#include <initializer_list>

namespace vellux {

std::string proxyFor(const std::string& strUrl, const std::optional<std::string>& strChosen) {
    if (strChosen)
        return *strChosen;
    // In curl's order. "HTTP_PROXY" is not among them: a server could set it for its scripts.
    const bool bTls = toLower(strUrl).starts_with("https:");
    for (const char* strName :
         {bTls ? "https_proxy" : "http_proxy", bTls ? "HTTPS_PROXY" : "http_proxy", "all_proxy", "ALL_PROXY"})
        if (const char* const strProxy = std::getenv(strName); strProxy != nullptr && *strProxy != '\0')
            return strProxy;
    return "";
}

int proxyPort(const std::string& strProxy) {
    constexpr int kDefaultPort = 1080; // curl's, but for proxies that are spoken to by TLS
    constexpr int kTlsPort = 443;
    const CurlUrl url(strProxy, CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME);
    if (!url.part(CURLUPART_HOST))
        return 0;
    if (const auto strPort = url.part(CURLUPART_PORT))
        return static_cast<int>(integerValue(*strPort));
    return toLower(strProxy).starts_with("https:") ? kTlsPort : kDefaultPort;
}

} // namespace vellux
