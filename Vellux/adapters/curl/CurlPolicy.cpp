#include "adapters/curl/CurlPolicy.h"

#include "support/Text.h"
#include "support/Url.h"

#include <curl/curl.h>

#include <algorithm>
#include <memory>

namespace vellux {

namespace {

bool breaksLine(std::string_view strText) {
    return strText.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos;
}

// curl skips extra slashes and takes what follows them for the host.
bool namesNoHost(const std::string& strUrl) {
    const std::size_t nHost = strUrl.find("://") + 3;
    return nHost >= strUrl.size() || std::string_view("/?#").find(strUrl[nHost]) != std::string_view::npos;
}

struct FreeUrl {
    void operator()(CURLU* url) const { curl_url_cleanup(url); }
};

// Absent when the URL has no such part.
std::optional<std::string> part(CURLU* url, CURLUPart which, unsigned int nFlags = 0) {
    char* text = nullptr;
    if (curl_url_get(url, which, &text, nFlags) != CURLUE_OK)
        return std::nullopt;
    std::string strPart = text;
    curl_free(text);
    return strPart;
}

// Scheme, host and port as curl itself parses them, since it is curl that connects. Absent for a URL that is
// malformed or has user information.
std::optional<std::string> originOf(const std::string& strUrl) {
    const std::unique_ptr<CURLU, FreeUrl> url(curl_url());
    if (url == nullptr || curl_url_set(url.get(), CURLUPART_URL, strUrl.c_str(), 0) != CURLUE_OK)
        return std::nullopt;
    const auto strScheme = part(url.get(), CURLUPART_SCHEME);
    const auto strHost = part(url.get(), CURLUPART_HOST);
    const auto strPort = part(url.get(), CURLUPART_PORT, CURLU_DEFAULT_PORT);
    if (!strScheme || !strHost || !strPort || part(url.get(), CURLUPART_USER))
        return std::nullopt;
    return toLower(*strScheme + "://" + *strHost + ":" + *strPort);
}

bool holdsCredential(const HttpRequest& request) {
    return request.strCredentialOrigin || hasField(request, "authorization");
}

} // namespace

bool hasField(const HttpRequest& request, std::string_view strName) {
    return std::any_of(request.headerFields.begin(), request.headerFields.end(),
                       [strName](const auto& field) { return toLower(field.first) == strName; });
}

std::optional<HttpError> validate(const HttpRequest& request) {
    if (!isHttpUrl(request.strUrl) || namesNoHost(request.strUrl))
        return HttpError{"not a URL"};
    const auto strOrigin = originOf(request.strUrl);
    if (!strOrigin)
        return HttpError{"not a URL of a host alone"};
    for (const auto& [strName, strValue] : request.headerFields)
        if (breaksLine(strName) || breaksLine(strValue))
            return HttpError{"line break in a header field"};
    if (holdsCredential(request) && (!strOrigin->starts_with("https:") ||
                                     originOf(request.strCredentialOrigin.value_or("")) != strOrigin))
        return HttpError{"not where the credential belongs"};
    return std::nullopt;
}

bool mayGoTo(const HttpRequest& request, const std::string& strUrl) {
    const auto strOrigin = originOf(strUrl);
    const bool bStays = request.strBody || holdsCredential(request);
    return strOrigin && (!bStays || strOrigin == originOf(request.strUrl));
}

} // namespace vellux
