// The user's applications resource, and the registration of an endpoint at it.

#include "VelluxHttp/VelluxHttp.h"

#include "VelluxHttp/JsonBody.h"
#include "VelluxHttp/Requests.h"
#include "ports/Platform.h"
#include "support/Text.h"
#include "support/Url.h"

#include <uuid/uuid.h>

#include <array>

namespace {

// A random (version 4) UUID, 36 characters, letters in upper case.
std::string newEndpointId() {
    uuid_t uuid;
    uuid_generate_random(uuid);
    std::array<char, UUID_STR_LEN> text{};
    uuid_unparse_upper(uuid, text.data());
    return text.data();
}

// Single quotes, so not strict JSON (kept-on-purpose:single-quotes), and a fixed user agent
// (kept-on-purpose:user-agent): servers accept both.
std::string registrationBody(const std::string& strEndpointId) {
    return "{'Culture':'en-US','endpointId':'" + strEndpointId + "','userAgent':'Virelto-" + strEndpointId +
           "'}";
}

// The text between "//" and the next "/" of an absolute URL, port included; "" when there is no such piece.
std::string hostOf(const std::string& strHref) {
    const auto pieces = vellux::split(strHref, "/");
    return pieces.size() >= 3 ? pieces[2] : "";
}

} // namespace

std::optional<std::string>
VelluxHttp::httpGet_ApplicationServiceURL(const std::optional<std::string>& strHost,
                                          const std::optional<std::string>& strAuthorization) {
    if (!strHost || !strAuthorization)
        return std::nullopt;
    const std::string strUrl =
        "https://" + *strHost + "/Autodiscover/AutodiscoverService.svc/root/oauth/user";
    if (!vellux::isHttpUrl(strUrl))
        return std::nullopt;
    const auto strBody = vellux::exchangeOrAlert(
        vellux::getRequest(strUrl, {{"Authorization", *strAuthorization}}, issuerOf(*strAuthorization)));
    if (!strBody)
        return std::nullopt;
    const auto answer = vellux::JsonBody::parse(*strBody);
    if (!answer)
        return std::nullopt;
    const auto strHref = answer->text({"_links", "applications", "href"});
    if (!strHref)
        return std::nullopt;
    // The server may name another host than the user did; all requests go to the user's. It is replaced
    // wherever it occurs, even in the path. (kept-on-purpose:host-replaced-everywhere)
    std::string strApplicationsUrl = vellux::replaceAll(*strHref, hostOf(*strHref), *strHost);
    strApplicationsServiceUrl.set(strApplicationsUrl);
    return strApplicationsUrl;
}

std::optional<std::string>
VelluxHttp::httpPost_SetupApplicationsAndGetPresenceURL(const std::optional<std::string>& strHost,
                                                        const std::optional<std::string>& strApplicationsUrl,
                                                        const std::optional<std::string>& strAuthorization) {
    if (!strHost || !strApplicationsUrl || !strAuthorization)
        return std::nullopt;
    if (!vellux::isHttpUrl(*strApplicationsUrl))
        return std::nullopt;
    const vellux::HttpHeaderFields headerFields = {{"Content-Type", "application/json"},
                                                   {"Authorization", *strAuthorization}};
    const auto strIssuer = issuerOf(*strAuthorization);
    const vellux::HttpRequest registration =
        vellux::postRequest(*strApplicationsUrl, headerFields, registrationBody(newEndpointId()), strIssuer);

    std::optional<std::string> strBody = vellux::exchangeOrAlert(registration);
    if (!strBody)
        return std::nullopt;
    if (!vellux::isUtf8(*strBody))
        return std::nullopt;

    // Anywhere in the text, before it is parsed. (kept-on-purpose:text-search)
    if (vellux::toLower(*strBody).find("makemeavailable") != std::string::npos) {
        const auto answer = vellux::JsonBody::parse(*strBody);
        if (!answer)
            return std::nullopt;
        const auto strHref = answer->text({"_embedded", "me", "_links", "makeMeAvailable", "href"});
        if (!strHref)
            return std::nullopt;
        const std::string strUrl = "https://" + *strHost + *strHref;
        if (!vellux::isHttpUrl(strUrl))
            return std::nullopt;
        // Unlike elsewhere, only the presence of a body counts here; a transport error beside it is ignored.
        // (kept-on-purpose:body-beside-error)
        strBody = vellux::platform()
                      .httpTransport
                      .sendSynchronousRequest(vellux::postRequest(strUrl, headerFields, "{}", strIssuer))
                      .strBody;
        if (!strBody)
            return std::nullopt;
        if (strBody->empty() || !vellux::isUtf8(*strBody)) {
            // The usual case: a 204. Registering again returns the resource with its presence link.
            // (kept-on-purpose:registered-twice)
            strBody = vellux::exchangeOrAlert(registration);
            if (!strBody)
                return std::nullopt;
        }
    }

    const auto answer = vellux::JsonBody::parse(*strBody);
    if (!answer)
        return std::nullopt;
    const auto strPresenceHref = answer->text({"_embedded", "me", "_links", "presence", "href"});
    if (!strPresenceHref)
        return std::nullopt;
    std::string strResult = "https://" + *strHost + *strPresenceHref;
    strPresenceUrl.set(strResult);
    // Without this link the URL of an earlier registration stays. (kept-on-purpose:old-events-link)
    if (const auto strEventsHref = answer->text({"_links", "events", "href"}))
        strEventChannelUrl.set("https://" + *strHost + *strEventsHref);
    return strResult;
}
