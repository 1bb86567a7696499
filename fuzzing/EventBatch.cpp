// A batch of events as it arrives on the open poll, then the answers to the presence queries that it sets
// off.

#include "FuzzWorld.h"

#include "support/Url.h"

namespace {

using fuzzing::require;

constexpr const char* kHost = "lync.example";
const std::string kPresenceUrl = "https://lync.example/ucwa/me/presence";
const std::string kFirstPollUrl = "https://lync.example/ucwa/events?ack=1";

fuzzing::World& signedInWorld() {
    static auto& world = *new fuzzing::World;
    world.ui().buttonFlashOnCall()->setState(vellux::Button::kOn);
    world.transport.begin({R"({"token_type":"Bearer","access_token":"T0k3n"})"});
    world.client().httpPost_GetOAuthToken(kHost, "u", "p");
    return world;
}

void registerEndpoint(fuzzing::World& world) {
    world.transport.begin({R"({"_links":{"events":{"href":"/ucwa/events?ack=1"}},)"
                           R"("_embedded":{"me":{"_links":{"presence":{"href":"/ucwa/me/presence"}}}}})"});
    world.client().httpPost_SetupApplicationsAndGetPresenceURL(kHost, "https://lync.example/apps",
                                                               "Bearer T0k3n");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    static fuzzing::World& world = signedInWorld();
    static bool bLinkChanged = true; // by the run before
    if (bLinkChanged)
        registerEndpoint(world);
    fuzzing::AnsweringTransport& transport = world.transport;
    VelluxHttp& client = world.client();
    transport.begin({});
    client.httpGet_EventChannels();
    require(transport.polls.size() == 1 && transport.pollRequests[0].strUrl == kFirstPollUrl,
            "the channel opens");
    const auto firstPoll = transport.polls.front();
    const auto parts = fuzzing::partsOf(fuzzing::textOf(pData, nSize));
    transport.begin({parts.begin() + 1, parts.end()});
    world.journal.clear();

    firstPoll->simulateResponse();
    firstPoll->simulateData(parts[0]);
    bLinkChanged = !transport.requests.empty();
    for (const vellux::HttpRequest& request : transport.requests)
        require(request.strUrl == kPresenceUrl && request.headerFields.size() == 1 &&
                    request.headerFields[0].second == "Bearer T0k3n",
                "a batch asks for nothing but the presence");
    require(transport.polls.size() <= transport.requests.size(), "a poll follows a presence query");
    require(transport.requests.size() <= parts[0].size() / std::string_view(R"({"rel")").size(),
            "a query follows an event");
    for (const vellux::HttpRequest& poll : transport.pollRequests)
        require(poll.strUrl.starts_with("https://lync.example") && vellux::isHttpUrl(poll.strUrl) &&
                    poll.strUrl == transport.pollRequests[0].strUrl,
                "polls go to the next link, on the host that signed in");

    const std::size_t nPolls = transport.polls.size();
    (nPolls > 0 ? transport.polls.back() : firstPoll)->simulateFailure();
    require(world.journal.count("sleep 0.5") == 1, "a failure waits");
    require(transport.polls.size() <= nPolls + 1, "a failure opens one poll at most");
    if (transport.polls.size() > nPolls)
        require(transport.pollRequests.back().strUrl ==
                    (nPolls > 0 ? transport.pollRequests[0].strUrl : kFirstPollUrl),
                "a failure asks for the same again");

    client.abortEventChannelConnection();
    require(client.getPresenceStatus() == "" && !client.IsUserOnCall(), "an abort forgets the presence");
    return 0;
}
