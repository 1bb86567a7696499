// The answers to one sign-in, in order: token, user resource, registration, make me available, second
// registration, presence; the first of them also as the answer to a discovery.

#include "FuzzWorld.h"

#include "support/Url.h"

#include <algorithm>

namespace {

using fuzzing::require;

constexpr const char* kHost = "lync.example";
constexpr const char* kPassword = "pa55\x1Eword"; // which no answer holds, and no URL

bool hasPassword(const std::string& strText) {
    return strText.find(kPassword) != std::string::npos;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    static auto& world = *new fuzzing::World;
    VelluxHttp& client = world.client();
    const auto& requests = world.transport.requests;
    const auto answers = fuzzing::partsOf(fuzzing::textOf(pData, nSize));
    world.journal.clear();

    world.transport.begin({answers[0]});
    const std::string strFound = client.httpGet_StartAutomaticDiscovery("kestrel.example", true, false);
    require(strFound.empty() || strFound.ends_with("kestrel.example"), "what is found ends in the domain");
    require(world.journal.lines().empty(), "discovery is silent");

    world.transport.begin(answers);
    const auto strToken = client.httpPost_GetOAuthToken(kHost, "user", kPassword);
    const auto strApplications = client.httpGet_ApplicationServiceURL(kHost, strToken);
    const auto strPresenceUrl =
        client.httpPost_SetupApplicationsAndGetPresenceURL(kHost, strApplications, strToken);
    const auto strPresence = client.httpGet_MyPresence(strPresenceUrl, strToken);
    const std::size_t nSent = requests.size();
    require(nSent >= 1 && nSent <= 6, "a step sends one request, the registration three at most");
    require(strToken ? strToken->find(' ') != std::string::npos : nSent == 1,
            "without a token there is no further step");
    require(!strPresenceUrl || strPresenceUrl->starts_with("https://lync.example"),
            "the presence is asked of the typed host");
    require(!strPresence || (strPresenceUrl && client.getPresenceStatus() == strPresence),
            "the presence is kept as it came");

    for (const vellux::HttpRequest& request : requests) {
        require(vellux::isHttpUrl(request.strUrl), "only what forms a URL is asked for");
        const bool bFirst = &request == &requests[0];
        require(hasPassword(request.strBody.value_or("")) == bFirst && !hasPassword(request.strUrl),
                "the password goes out once");
        const auto authorization =
            std::find_if(request.headerFields.begin(), request.headerFields.end(),
                         [](const auto& field) { return field.first == "Authorization"; });
        require(bFirst == (authorization == request.headerFields.end()), "only the first has no token");
        require(bFirst || authorization->second == strToken, "the token goes out as it came");
    }

    if (strPresenceUrl) {
        client.httpGet_EventChannels();
        for (const vellux::HttpRequest& poll : world.transport.pollRequests)
            require(vellux::isHttpUrl(poll.strUrl) && poll.strUrl.starts_with("https://lync.example"),
                    "polls go to the typed host");
    }
    client.abortEventChannelConnection();
    return 0;
}
