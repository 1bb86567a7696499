// The presence service client: signs in to the server's web interface, registers an application endpoint,
// reads the user's presence and follows it over the event channel.
//
// SignIn.cpp         discovery and sign-in
// Registration.cpp   the user's applications resource, registration, make me available
// EventChannel.cpp   presence query, event channel and its callbacks
// Requests.h         what all requests have in common
// JsonBody.h         what is read out of the server's answers
//
// Sign-in and registration run on the status monitor's thread and block it, 30 seconds a request at most. The
// event channel lives on the main thread. Absent results mean failure; "" is a value. HTTP status codes are
// ignored.
#pragma once

#include "model/ViewState.h"
#include "ports/HttpTransport.h"
#include "threads/MainThread.h"
#include "threads/Observable.h"
#include "threads/Shared.h"
#include "threads/SharedInstance.h"

#include <atomic>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

class VelluxHttp : public vellux::HttpConnectionDelegate {
public:
    /// The one instance. Any thread.
    static VelluxHttp& sharedVelluxHttp();
    VelluxHttp(const VelluxHttp&) = delete;
    VelluxHttp& operator=(const VelluxHttp&) = delete;

    // ---- SignIn.cpp ----

    /// Asks the discovery service of a domain, over HTTPS or HTTP, at its internal or its public name, which
    /// host to sign in against. One request, no retry, no alert. Blocks for up to 30 s. Returns the host; ""
    /// on any failure.
    std::string httpGet_StartAutomaticDiscovery(const std::optional<std::string>& strDomain, bool bUseHttps,
                                                bool bInternal);

    /// Signs in with user name and password, both sent as they are, without percent-encoding: that is what
    /// servers expect. Returns the Authorization value and keeps it together with the host; on failure
    /// absent, and the values of an earlier sign-in stay. Shows an alert when the server can't be reached or
    /// refuses the password, and waits until it is dismissed.
    std::optional<std::string> httpPost_GetOAuthToken(const std::optional<std::string>& strHost,
                                                      const std::optional<std::string>& strUserName,
                                                      const std::optional<std::string>& strPassword);

    // ---- Registration.cpp ----

    /// The URL of the user's applications resource, its host replaced by `strHost`; absent on failure, with
    /// an alert when the server can't be reached.
    std::optional<std::string>
    httpGet_ApplicationServiceURL(const std::optional<std::string>& strHost,
                                  const std::optional<std::string>& strAuthorization);

    /// Registers a new endpoint, makes the user available if the server asks for it, and keeps the presence
    /// and event-channel URLs. Returns the presence URL; absent on failure, with an alert when a registration
    /// doesn't get through.
    std::optional<std::string>
    httpPost_SetupApplicationsAndGetPresenceURL(const std::optional<std::string>& strHost,
                                                const std::optional<std::string>& strApplicationsUrl,
                                                const std::optional<std::string>& strAuthorization);

    // ---- EventChannel.cpp ----

    /// Reads the presence resource once. Returns the presence token as the server spells it and keeps it and
    /// the on-call flag; absent on failure. Any thread; blocks 30 seconds at most.
    std::optional<std::string> httpGet_MyPresence(const std::optional<std::string>& strUrl,
                                                  const std::optional<std::string>& strAuthorization);

    /// Whether the last presence that was read says "on-the-phone". Any thread.
    bool IsUserOnCall() const { return bIsUserOnCall; }
    /// The last presence token; absent when the server's answer had none, "" before the first answer and
    /// after an abort. Any thread.
    std::optional<std::string> getPresenceStatus() const { return presenceStatus.get(); }
    /// Replaces the token. Any thread.
    void setPresenceStatus(const std::optional<std::string>& strToken);

    /// Opens the next long poll, which fails after 15 s of silence from the server; does nothing when no URL
    /// is known. At most sixteen are open: another one closes the oldest, without a callback. Main thread.
    void httpGet_EventChannels();

    /// Cancels the long poll opened last, then those that it replaced, and forgets the presence. A sign-in
    /// that is still under way opens a channel of its own afterwards. Main thread.
    void abortEventChannelConnection();

    // For the view; nothing in the client depends on them. Any thread.

    /// Whether the presence is being followed. A poll that only ran into its time limit after it reached the
    /// server has not failed: most polls end so.
    vellux::Observable<vellux::ChannelStatus>& channel() { return m_channel; }
    /// The presence and on-call flag as they were read last.
    vellux::Observable<vellux::PresenceStatus>& presence() { return m_presence; }
    /// Whether the last sign-in of the calling thread was refused because of user name or password.
    static bool wasPasswordRefused();

    /// Does nothing: the status code is ignored, and an error's body arrives as data like any other.
    void connectionDidReceiveResponse(vellux::HttpConnection& connection) override;
    /// Handles one batch of events: for each presence event in it reads the presence, reports it to the
    /// listener and opens the next long poll. A batch without such an event opens none.
    void connectionDidReceiveData(vellux::HttpConnection& connection, std::string_view data) override;
    /// If this was the last open poll, no answer has opened another: channel() reports that the following has
    /// ended.
    void connectionDidFinishLoading(vellux::HttpConnection& connection) override;
    /// Waits half a second on the main thread and opens the same long poll again, without limit.
    void connectionDidFailWithError(vellux::HttpConnection& connection,
                                    const vellux::HttpError& error) override;
    /// Does nothing; no callback has this form. (kept-on-purpose:callback-of-nobody)
    void connection(vellux::HttpConnection* connection);

private:
    using OptionalText = vellux::Shared<std::optional<std::string>>;

    static vellux::SharedInstanceSlot<VelluxHttp> sharedVelluxHttpInstance;

    VelluxHttp() = default;

    /// The URL that issued an Authorization value, and so the only place it may be sent to: overlapping
    /// sign-ins may combine one's host with the other's value, and links in answers may point anywhere.
    /// Absent for a value that was not issued to this process. Any thread.
    std::optional<std::string> issuerOf(const std::string& strAuthorization) const;
    void forgetPoll(const vellux::HttpConnection& connection) VELLUX_REQUIRES(vellux::mainThreadRole);
    void noteWhetherFollowing() VELLUX_REQUIRES(vellux::mainThreadRole);
    void notePresence();

    OptionalText strOAuthToken;             // the whole Authorization value: token type, blank, access token
    OptionalText strApplicationsServiceUrl; // nothing reads it; kept-on-purpose:unread-url
    OptionalText strPresenceUrl;
    OptionalText strEventChannelUrl;
    OptionalText domainString; // nothing reads it; kept-on-purpose:unread-domain
    OptionalText presenceStatus;
    std::atomic<bool> bIsUserOnCall{false};
    // The one opened last.
    std::shared_ptr<vellux::HttpConnection>
        urlConnectionToGetEvents VELLUX_GUARDED_BY(vellux::mainThreadRole);
    OptionalText FQDN; // the host that signed in
    std::optional<std::string> nextLink VELLUX_GUARDED_BY(vellux::mainThreadRole);
    // All that are open, oldest first.
    std::vector<std::shared_ptr<vellux::HttpConnection>>
        m_openPolls VELLUX_GUARDED_BY(vellux::mainThreadRole);
    vellux::Observable<vellux::ChannelStatus> m_channel; // written by main
    // When the poll opened last, or one before it, was found not to reach the server; absent while it does.
    std::optional<std::chrono::system_clock::time_point>
        m_notReachedSince VELLUX_GUARDED_BY(vellux::mainThreadRole);
    // What the answer to the last poll amounts to, should it open no other.
    vellux::EndReason m_endReason VELLUX_GUARDED_BY(vellux::mainThreadRole) = vellux::EndReason::Unknown;
    vellux::Observable<vellux::PresenceStatus> m_presence;
    // Authorization values and the URLs that issued them, the latest last.
    vellux::Shared<std::vector<std::pair<std::string, std::string>>> m_issued;
};
