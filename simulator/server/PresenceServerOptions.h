// What a presence server is started with.
#pragma once

#include <chrono>
#include <string>
#include <string_view>

namespace vellux::simulator {

/// Called for events at the server, on its threads or on the thread that causes them, with no lock held.
class PresenceServerObserver {
public:
    virtual ~PresenceServerObserver() = default;
    /// A request has come; it has not been answered yet. The target holds path and query; header values and
    /// bodies, which may hold credentials, are never reported.
    virtual void requestArrived(std::string_view strMethod, std::string_view strTarget) = 0;
    /// The user's presence is about to become this one.
    virtual void presenceChanges(std::string_view strAvailability) = 0;
    /// A poll has begun or ceased to be held.
    virtual void pollsChanged() = 0;
};

struct PresenceServerOptions {
    /// The one account; both are compared byte by byte with what the client sends.
    std::string strUserName;
    std::string strPassword;
    /// How long a poll without news is held. Clients give up long before the default.
    std::chrono::milliseconds holdLimit = std::chrono::minutes(30);
};

} // namespace vellux::simulator
