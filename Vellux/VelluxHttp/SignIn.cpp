// Discovery and sign-in.

#include "VelluxHttp/VelluxHttp.h"

#include "AlertPopup.h"
#include "VelluxHttp/JsonBody.h"
#include "VelluxHttp/Requests.h"
#include "support/Text.h"
#include "support/Url.h"

#include <algorithm>

namespace {
// More than sign-ins can overlap: older values are no longer in use.
constexpr std::size_t kMostIssued = 16;

thread_local bool bPasswordRefused = false;
} // namespace

vellux::SharedInstanceSlot<VelluxHttp> VelluxHttp::sharedVelluxHttpInstance;

VelluxHttp& VelluxHttp::sharedVelluxHttp() {
    return vellux::sharedInstance(sharedVelluxHttpInstance, [] { return new VelluxHttp; });
}

// The program doesn't call it: users type their server's name. (kept-on-purpose:discovery-unused)
std::string VelluxHttp::httpGet_StartAutomaticDiscovery(const std::optional<std::string>& strDomain,
                                                        bool bUseHttps, bool bInternal) {
    if (!strDomain)
        return "";
    domainString.set(strDomain);
    const std::string strUrl = std::string(bUseHttps ? "https://" : "http://") +
                               (bInternal ? "lyncdiscoverinternal." : "lyncdiscover.") + *strDomain;
    if (!vellux::isHttpUrl(strUrl))
        return "";
    // A GET with a Content-Type. (kept-on-purpose:content-type-of-nothing)
    const auto strBody = vellux::exchange(vellux::getRequest(strUrl, {{"Content-Type", "application/json"}}));
    if (!strBody)
        return "";
    const auto answer = vellux::JsonBody::parse(*strBody);
    if (!answer)
        return "";
    const auto strSelf = answer->text({"_links", "self", "href"});
    if (!strSelf || strSelf->empty())
        return "";
    // Of "https://lyncdiscover.<domain>/path" this is the text between "//" and the domain.
    const std::string strBeforeDomain = vellux::split(*strSelf, *strDomain).front();
    const auto pieces = vellux::split(strBeforeDomain, "//");
    if (pieces.size() < 2)
        return "";
    return pieces[1] + *strDomain;
}

std::optional<std::string> VelluxHttp::httpPost_GetOAuthToken(const std::optional<std::string>& strHost,
                                                              const std::optional<std::string>& strUserName,
                                                              const std::optional<std::string>& strPassword) {
    bPasswordRefused = false;
    if (!strHost || !strUserName || !strPassword)
        return std::nullopt;
    const std::string strUrl = "https://" + *strHost + "/WebTicket/oauthtoken";
    if (!vellux::isHttpUrl(strUrl))
        return std::nullopt;
    // Not percent-encoded. (kept-on-purpose:credentials-verbatim)
    const auto strBody = vellux::exchangeOrAlert(vellux::postRequest(
        strUrl, {{"Content-Type", "application/x-www-form-urlencoded"}},
        "grant_type=password&username=" + *strUserName + "&password=" + *strPassword, strUrl));
    if (!strBody)
        return std::nullopt;
    const auto answer = vellux::JsonBody::parse(*strBody);
    if (!answer)
        return std::nullopt;
    // The caller shows an alert of its own after this one. (kept-on-purpose:two-alerts)
    bPasswordRefused = answer->text({"error"}) == "invalid_grant";
    if (bPasswordRefused)
        AlertPopup::sharedAlertPopup().display("Vellux", "Username/Password Pair is invalid");
    // The token's lifetime is not read, and the token is never renewed. (kept-on-purpose:token-lifetime)
    const auto strTokenType = answer->text({"token_type"});
    const auto strAccessToken = answer->text({"access_token"});
    if (!strTokenType || !strAccessToken)
        return std::nullopt;
    std::string strAuthorization = *strTokenType + " " + *strAccessToken;
    m_issued.update([&](auto& issued) {
        if (issued.size() == kMostIssued)
            issued.erase(issued.begin());
        issued.emplace_back(strAuthorization, strUrl);
    });
    strOAuthToken.set(strAuthorization);
    FQDN.set(strHost);
    return strAuthorization;
}

bool VelluxHttp::wasPasswordRefused() {
    return bPasswordRefused;
}

std::optional<std::string> VelluxHttp::issuerOf(const std::string& strAuthorization) const {
    return m_issued.with([&strAuthorization](const auto& issued) {
        const auto found =
            std::find_if(issued.rbegin(), issued.rend(),
                         [&strAuthorization](const auto& each) { return each.first == strAuthorization; });
        return found == issued.rend() ? std::nullopt : std::optional(found->second);
    });
}
