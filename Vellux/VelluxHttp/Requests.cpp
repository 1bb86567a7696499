#include "VelluxHttp/Requests.h"

#include "AlertPopup.h"
#include "ports/Platform.h"

#include <utility>

namespace vellux {

namespace {
constexpr std::chrono::seconds kTimeout{30};
} // namespace

HttpRequest getRequest(std::string strUrl, HttpHeaderFields headerFields,
                       std::optional<std::string> strCredentialOrigin) {
    return {"GET",        std::move(strUrl), std::move(headerFields),
            std::nullopt, kTimeout,          std::move(strCredentialOrigin)};
}

HttpRequest postRequest(std::string strUrl, HttpHeaderFields headerFields, std::string strBody,
                        std::optional<std::string> strCredentialOrigin) {
    headerFields.emplace_back("Content-Length", std::to_string(strBody.size()));
    return {"POST",
            std::move(strUrl),
            std::move(headerFields),
            std::move(strBody),
            kTimeout,
            std::move(strCredentialOrigin)};
}

std::optional<std::string> exchange(const HttpRequest& request) {
    HttpResponse answer = platform().httpTransport.sendSynchronousRequest(request);
    if (!answer.succeeded())
        return std::nullopt;
    return std::move(answer.strBody);
}

std::optional<std::string> exchangeOrAlert(const HttpRequest& request) {
    std::optional<std::string> strBody = exchange(request);
    if (strBody)
        return strBody;
    // There is no Configure dialog. (kept-on-purpose:configure-dialog)
    AlertPopup::sharedAlertPopup().display(
        "Vellux",
        "Not able to connect to Lync server. Please check your network connection and check whether "
        "you have entered the correct server name on the Configure dialog.");
    return std::nullopt;
}

} // namespace vellux
