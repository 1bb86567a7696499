#include "server/PresenceService.h"

#include "Hex.h"
#include "support/Text.h"

#include <openssl/rand.h>

#include <algorithm>
#include <array>
#include <utility>

namespace vellux::simulator {

namespace {

constexpr int kFirstApplicationID = 2701;

Reply reply(int nStatus, std::string strBody) {
    Reply made;
    made.nStatus = nStatus;
    made.strBody = std::move(strBody);
    return made;
}

Reply page(int nStatus, std::string strBody) {
    Reply made = reply(nStatus, std::move(strBody));
    made.strContentType = "text/html";
    return made;
}

// "cwt=" and 48 random bytes in hexadecimal digits.
std::string newAccessToken() {
    std::array<std::uint8_t, 48> random{};
    RAND_bytes(random.data(), static_cast<int>(random.size()));
    return "cwt=" + hexOf(random);
}

// The value of 'name':'value' in a registration, which has single quotes and is no JSON; "" when it is
// missing.
std::string quotedValue(const std::string& strBody, const std::string& strName) {
    const auto pieces = split(strBody, "'" + strName + "':'");
    return pieces.size() < 2 ? "" : split(pieces[1], "'").front();
}

// The number in "ack=7"; 1, that of the first poll, without one.
std::int64_t pollNumber(const std::string& strQuery) {
    constexpr std::string_view kHead = "ack=";
    return strQuery.starts_with(kHead) ? integerValue(std::string_view(strQuery).substr(kHead.size())) : 1;
}

} // namespace

PresenceService::PresenceService(PresenceServerOptions options, PresenceServerObserver* observer)
    : m_options(std::move(options)), m_observer(observer), m_strAccessToken(newAccessToken()) {}

Reply PresenceService::answer(const Destination& destination, const ServerRequest& request) {
    if (destination.route == Route::Discovery)
        return reply(200, discoveryBody());
    if (destination.route == Route::Token)
        return answerToken(request);
    if (!isAuthorized(request))
        return page(401, unauthorizedPage());
    if (destination.route == Route::User)
        return reply(200, userBody());
    if (destination.route == Route::Applications)
        return answerApplications(request);
    if (destination.route == Route::MakeMeAvailable)
        return answerMakeMeAvailable(destination.strApplication);

    std::shared_ptr<EventChannel> channel;
    {
        ScopedLock lock(m_mutex);
        const Application* const pApplication = find(destination.strApplication);
        if (pApplication == nullptr)
            return reply(410, goneBody());
        if (destination.route == Route::Presence)
            return reply(200, presenceBody(pApplication->facts.strPath, m_presence));
        channel = pApplication->channel;
    }
    return channel->poll(pollNumber(destination.strQuery), request.nSocket);
}

// Both values stand in the form as they were typed, without percent-encoding.
Reply PresenceService::answerToken(const ServerRequest& request) const {
    const bool bKnown = request.strBody == "grant_type=password&username=" + m_options.strUserName +
                                               "&password=" + m_options.strPassword;
    return bKnown ? reply(200, tokenBody(m_strAccessToken)) : reply(400, invalidGrantBody());
}

bool PresenceService::isAuthorized(const ServerRequest& request) const {
    return request.strAuthorization == "Bearer " + m_strAccessToken;
}

Reply PresenceService::answerApplications(const ServerRequest& request) {
    const std::string strEndpointID = quotedValue(request.strBody, "endpointId");
    if (strEndpointID.empty())
        return reply(400, badRequestBody());
    ScopedLock lock(m_mutex);
    return reply(201,
                 applicationBody(registered(strEndpointID, quotedValue(request.strBody, "userAgent")).facts));
}

Reply PresenceService::answerMakeMeAvailable(const std::string& strID) {
    bool bWasOffline = false;
    {
        ScopedLock lock(m_mutex);
        Application* const pApplication = find(strID);
        if (pApplication == nullptr)
            return reply(410, goneBody());
        pApplication->facts.bMadeAvailable = true;
        bWasOffline = m_presence.strAvailability == "Offline";
    }
    if (bWasOffline)
        setPresence({"Online", ""});
    return reply(204, "");
}

PresenceService::Application* PresenceService::find(const std::string& strID) {
    const auto found =
        std::find_if(m_applications.begin(), m_applications.end(),
                     [&](const Application& application) { return application.strID == strID; });
    return found == m_applications.end() ? nullptr : &*found;
}

PresenceService::Application& PresenceService::registered(const std::string& strEndpointID,
                                                          std::string strUserAgent) {
    for (Application& application : m_applications)
        if (application.strEndpointID == strEndpointID)
            return application;
    const std::string strID = std::to_string(kFirstApplicationID + static_cast<int>(m_applications.size()));
    const std::string strPath = std::string(kApplicationsPath) + "/" + strID;
    const auto pollsChanged = [observer = m_observer] {
        if (observer != nullptr)
            observer->pollsChanged();
    };
    Application& application = m_applications.emplace_back();
    application.strID = strID;
    application.strEndpointID = strEndpointID;
    application.facts = {strPath, std::move(strUserAgent), false};
    application.channel = std::make_shared<EventChannel>(strPath, m_options.holdLimit, pollsChanged);
    if (m_bClosed)
        application.channel->close();
    return application;
}

void PresenceService::setPresence(Presence presence) {
    if (m_observer != nullptr)
        m_observer->presenceChanges(presence.strAvailability);
    {
        ScopedLock lock(m_mutex);
        m_presence = std::move(presence);
    }
    for (const auto& channel : channels())
        channel->tellPresence();
}

std::vector<std::shared_ptr<EventChannel>> PresenceService::channels() const {
    ScopedLock lock(m_mutex);
    std::vector<std::shared_ptr<EventChannel>> all;
    for (const Application& application : m_applications)
        all.push_back(application.channel);
    return all;
}

void PresenceService::closeChannels() {
    {
        ScopedLock lock(m_mutex);
        m_bClosed = true;
    }
    for (const auto& channel : channels())
        channel->close();
}

void PresenceService::cutHeldPolls() {
    for (const auto& channel : channels())
        channel->cutHold();
}

std::shared_ptr<EventChannel> PresenceService::currentChannel() const {
    ScopedLock lock(m_mutex);
    return m_applications.empty() ? nullptr : m_applications.back().channel;
}

std::string PresenceService::currentPath() const {
    ScopedLock lock(m_mutex);
    return m_applications.empty() ? "" : m_applications.back().facts.strPath;
}

} // namespace vellux::simulator
