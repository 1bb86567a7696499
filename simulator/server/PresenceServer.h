// An embedded presence server: all resources that a client needs to sign in, register and follow a presence,
// over HTTPS on loopback, with a hand on what it answers.
#pragma once

#include "server/CertificateAuthority.h"
#include "server/Interference.h"
#include "server/PresenceServerOptions.h"
#include "server/Reply.h"
#include "server/Route.h"

#include <memory>
#include <string>

namespace vellux::simulator {

/// Any thread. The user is "Offline" at first; a client that makes itself available while the user is offline
/// brings them "Online".
class PresenceServer {
public:
    /// Starts serving; null when no port or no certificate is available. The observer may be null; it must
    /// outlive the server.
    static std::unique_ptr<PresenceServer> start(const CertificateAuthority& authority,
                                                 PresenceServerOptions options,
                                                 PresenceServerObserver* observer = nullptr);
    /// Calls stop().
    ~PresenceServer();
    PresenceServer(const PresenceServer&) = delete;
    PresenceServer& operator=(const PresenceServer&) = delete;

    /// What a user types as the server's name: "127.0.0.1:" and the port.
    std::string host() const;
    int port() const;

    /// Ends all held polls and waits, closes all connections and waits for their threads. A second call has
    /// no effect. Not from within the observer.
    void stop();

    // ---- Script -------------------------------------------------------------------------------------------

    /// Changes the user's presence and tells every application; "" leaves a member out of the presence
    /// resource.
    void setPresence(const std::string& strAvailability, const std::string& strActivity = "");

    /// Answers the next poll, or the one that is held, of the application registered last with this,
    /// verbatim. Without an application nothing happens.
    void emitBatch(Reply batch);

    /// Interferes with the next requests of a route.
    void interfere(Route route, Interference interference);

    /// Breaks the connections of all polls that are held now.
    void cutHeldPolls();

    // ---- State --------------------------------------------------------------------------------------------

    /// Whether the application registered last has a poll held here.
    bool isPolling() const;
    /// The path of the application registered last; "" when there is none.
    std::string applicationPath() const;
    /// The path of the poll that follows the next batch of that application, for batches that are emitted
    /// verbatim; "" when there is none.
    std::string nextPollPath() const;

private:
    struct Parts;
    explicit PresenceServer(std::unique_ptr<Parts> parts);

    std::unique_ptr<Parts> m_parts;
};

} // namespace vellux::simulator
