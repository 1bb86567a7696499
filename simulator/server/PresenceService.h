// The presence service behind the server's listener: the user, their applications, and an answer for each
// request.
#pragma once

#include "server/Bodies.h"
#include "server/EventChannel.h"
#include "server/HttpsListener.h"
#include "server/PresenceServerOptions.h"
#include "server/Reply.h"
#include "server/Route.h"
#include "threads/Mutex.h"

#include <memory>
#include <string>
#include <vector>

namespace vellux::simulator {

/// Any thread.
class PresenceService {
public:
    /// `observer` may be null and must outlive the service.
    PresenceService(PresenceServerOptions options, PresenceServerObserver* observer);

    /// The server's own answer to a request. Blocks while it holds a poll.
    Reply answer(const Destination& destination, const ServerRequest& request);

    void setPresence(Presence presence);

    /// Ends all polls, and every later one at once.
    void closeChannels();
    void cutHeldPolls();

    /// The event channel of the application registered last; null when there is none.
    std::shared_ptr<EventChannel> currentChannel() const;
    /// Its path; "" when there is none.
    std::string currentPath() const;

private:
    // Made once per endpoint id, never removed: a client that comes back finds its application as it left it.
    struct Application {
        std::string strID;
        std::string strEndpointID;
        ApplicationFacts facts;
        std::shared_ptr<EventChannel> channel;
    };

    Reply answerToken(const ServerRequest& request) const;
    Reply answerApplications(const ServerRequest& request);
    Reply answerMakeMeAvailable(const std::string& strID);
    bool isAuthorized(const ServerRequest& request) const;
    Application* find(const std::string& strID) VELLUX_REQUIRES(m_mutex);
    Application& registered(const std::string& strEndpointID, std::string strUserAgent)
        VELLUX_REQUIRES(m_mutex);
    std::vector<std::shared_ptr<EventChannel>> channels() const;

    const PresenceServerOptions m_options;
    PresenceServerObserver* const m_observer;
    const std::string m_strAccessToken; // the one that is given to whoever signs in

    mutable Mutex m_mutex;
    std::vector<Application> m_applications VELLUX_GUARDED_BY(m_mutex);
    Presence m_presence VELLUX_GUARDED_BY(m_mutex){"Offline", ""};
    bool m_bClosed VELLUX_GUARDED_BY(m_mutex) = false;
};

} // namespace vellux::simulator
