// The presence query, the event channel's long polls, and what their answers set off.

#include "VelluxHttp/VelluxHttp.h"

#include "VelluxHttp/JsonBody.h"
#include "VelluxHttp/Requests.h"
#include "ports/Platform.h"
#include "support/Url.h"

#include <utility>

namespace {

constexpr std::chrono::seconds kLongPollTimeout{15};
constexpr vellux::Seconds kRetryWait{0.5};
// Limits this process's descriptors and memory, like the transport's limit for a body; the protocol has no
// such rule.
constexpr std::size_t kMostPolls = 16;

bool contains(const std::string& strText, const char* strPart) {
    return strText.find(strPart) != std::string::npos;
}

bool isPresenceNews(const vellux::ChannelEvent& event) {
    return contains(*event.strRel, "presence") &&
           (contains(*event.strType, "added") || contains(*event.strType, "updated"));
}

} // namespace

std::optional<std::string>
VelluxHttp::httpGet_MyPresence(const std::optional<std::string>& strUrl,
                               const std::optional<std::string>& strAuthorization) {
    if (!strUrl || !strAuthorization || !vellux::isHttpUrl(*strUrl))
        return std::nullopt;
    const auto strBody = vellux::exchange(
        vellux::getRequest(*strUrl, {{"Authorization", *strAuthorization}}, issuerOf(*strAuthorization)));
    if (!strBody)
        return std::nullopt;
    const auto answer = vellux::JsonBody::parse(*strBody);
    if (!answer)
        return std::nullopt;
    bIsUserOnCall = answer->text({"activity"}) == "on-the-phone"; // kept-on-purpose:activity-case
    auto strAvailability = answer->text({"availability"});
    presenceStatus.set(strAvailability);
    notePresence();
    return strAvailability;
}

void VelluxHttp::httpGet_EventChannels() {
    vellux::assertMainThread();
    const auto strUrl = strEventChannelUrl.get();
    if (!strUrl || !vellux::isHttpUrl(*strUrl)) {
        noteWhetherFollowing();
        return;
    }
    vellux::HttpRequest request = vellux::getRequest(*strUrl, {});
    if (const auto strAuthorization = strOAuthToken.get())
        request =
            vellux::getRequest(*strUrl, {{"Authorization", *strAuthorization}}, issuerOf(*strAuthorization));
    request.timeout = kLongPollTimeout;
    m_endReason = vellux::EndReason::Unknown;
    if (m_openPolls.size() == kMostPolls) {
        m_openPolls.front()->cancel(); // replaced long ago
        m_openPolls.erase(m_openPolls.begin());
    }
    // An earlier poll that is still open is not cancelled: events that arrive on it still count.
    // (kept-on-purpose:poll-let-go)
    urlConnectionToGetEvents = vellux::platform().httpTransport.createConnection(request, *this);
    m_openPolls.push_back(urlConnectionToGetEvents);
    urlConnectionToGetEvents->start();
    noteWhetherFollowing();
}

// A sign-in that is under way continues, and opens a channel of its own. (kept-on-purpose:sign-in-goes-on)
void VelluxHttp::abortEventChannelConnection() {
    vellux::assertMainThread();
    if (urlConnectionToGetEvents != nullptr)
        urlConnectionToGetEvents->cancel();
    // The replaced ones, too: nothing that arrives on them counts any more.
    for (const auto& poll : std::exchange(m_openPolls, {}))
        poll->cancel();
    bIsUserOnCall = false;
    presenceStatus.set("");
    notePresence();
    m_notReachedSince.reset();
    m_endReason = vellux::EndReason::Unknown;
    m_channel.set({});
}

void VelluxHttp::connectionDidReceiveResponse(vellux::HttpConnection&) {}

// The next poll is opened only in the innermost loop: a batch without a presence event opens none, which ends
// the following (kept-on-purpose:batch-ends-following), and one with two opens two
// (kept-on-purpose:poll-per-event). The first missing member ends the whole batch
// (kept-on-purpose:member-ends-batch).
void VelluxHttp::connectionDidReceiveData(vellux::HttpConnection&, std::string_view data) {
    vellux::assertMainThread();
    m_notReachedSince.reset();
    m_endReason = vellux::EndReason::UnreadableAnswer;
    const auto batch = vellux::JsonBody::parse(data);
    if (!batch)
        return;
    nextLink = batch->text({"_links", "next", "href"});
    const auto senders = batch->senders();
    if (!senders || !nextLink || nextLink->empty())
        return;
    m_endReason = vellux::EndReason::NoPresenceEvent;
    for (const vellux::ChannelSender& sender : *senders) {
        if (!sender.events)
            return;
        for (const vellux::ChannelEvent& event : *sender.events) {
            if (!event.strRel || !event.strType)
                return;
            if (!isPresenceNews(event))
                continue;
            // Blocks the main thread. (kept-on-purpose:query-on-main)
            const auto strToken = httpGet_MyPresence(strPresenceUrl.get(), strOAuthToken.get());
            if (!strToken) {
                m_endReason = vellux::EndReason::PresenceNotRead;
                return;
            }
            vellux::platform().listener.updateVelluxStatusWithPresence(strToken);
            const auto strHost = FQDN.get();
            if (!strHost)
                return;
            // Whatever host the link names. (kept-on-purpose:next-at-sign-in-host)
            strEventChannelUrl.set("https://" + *strHost + *nextLink);
            httpGet_EventChannels();
        }
    }
}

void VelluxHttp::connectionDidFinishLoading(vellux::HttpConnection& connection) {
    vellux::assertMainThread();
    forgetPoll(connection);
    noteWhetherFollowing();
}

void VelluxHttp::connectionDidFailWithError(vellux::HttpConnection& connection,
                                            const vellux::HttpError& error) {
    vellux::assertMainThread();
    forgetPoll(connection);
    const bool bReplaced = &connection != urlConnectionToGetEvents.get(); // then the later one tells
    if (!bReplaced && error.failure == vellux::HttpFailure::Silent) {
        m_notReachedSince.reset();
    } else if (!bReplaced) {
        if (!m_notReachedSince)
            m_notReachedSince = vellux::platform().clock.now();
        m_channel.set({vellux::ChannelState::NotReached, *m_notReachedSince});
    }
    vellux::platform().clock.sleep(kRetryWait); // kept-on-purpose:retry-pause-on-main
    httpGet_EventChannels();                    // kept-on-purpose:retry-without-end
}

void VelluxHttp::connection(vellux::HttpConnection*) {}

void VelluxHttp::forgetPoll(const vellux::HttpConnection& connection) {
    std::erase_if(m_openPolls, [&connection](const auto& poll) { return poll.get() == &connection; });
}

void VelluxHttp::noteWhetherFollowing() {
    using vellux::ChannelState;
    if (m_openPolls.empty())
        m_channel.set({ChannelState::Ended, {}, std::exchange(m_endReason, vellux::EndReason::Unknown)});
    else if (m_notReachedSince)
        m_channel.set({ChannelState::NotReached, *m_notReachedSince});
    else
        m_channel.set({ChannelState::Open});
}

void VelluxHttp::setPresenceStatus(const std::optional<std::string>& strToken) {
    presenceStatus.set(strToken);
    notePresence();
}

void VelluxHttp::notePresence() {
    m_presence.set({presenceStatus.get(), bIsUserOnCall});
}
