#include "adapters/curl/CurlPolicy.h"

#include "adapters/curl/CurlUrl.h"
#include "support/Text.h"
#include "support/Url.h"

#include <algorithm>

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

// Scheme, host and port; absent for a URL that is malformed or has user information.
std::optional<std::string> originOf(const std::string& strUrl) {
    const CurlUrl url(strUrl);
    const auto strScheme = url.part(CURLUPART_SCHEME);
    const auto strHost = url.part(CURLUPART_HOST);
    const auto strPort = url.part(CURLUPART_PORT, CURLU_DEFAULT_PORT);
    if (!strScheme || !strHost || !strPort || url.part(CURLUPART_USER))
        return std::nullopt;
    return toLower(*strScheme + "://" + *strHost + ":" + *strPort);
}

bool holdsCredential(const HttpRequest& request) {
    return request.strCredentialOrigin || hasField(request, "authorization");
}

HttpError notSent(const char* strWhy) {
    return {strWhy, HttpFailure::NotSent};
}

} // namespace

bool hasField(const HttpRequest& request, std::string_view strName) {
    return std::any_of(request.headerFields.begin(), request.headerFields.end(),
                       [strName](const auto& field) { return toLower(field.first) == strName; });
}

std::optional<HttpError> validate(const HttpRequest& request) {
    if (!isHttpUrl(request.strUrl) || namesNoHost(request.strUrl))
        return notSent("not a URL");
    const auto strOrigin = originOf(request.strUrl);
    if (!strOrigin)
        return notSent("not a URL of a host alone");
    for (const auto& [strName, strValue] : request.headerFields)
        if (breaksLine(strName) || breaksLine(strValue))
            return notSent("line break in a header field");
    if (holdsCredential(request) && (!strOrigin->starts_with("https:") ||
                                     originOf(request.strCredentialOrigin.value_or("")) != strOrigin))
        return notSent("not where the credential belongs");
    return std::nullopt;
}

bool mayGoTo(const HttpRequest& request, const std::string& strUrl) {
    const auto strOrigin = originOf(strUrl);
    const bool bStays = request.strBody || holdsCredential(request);
    return strOrigin && (!bStays || strOrigin == originOf(request.strUrl));
}

} // namespace vellux
