// What becomes of a sign-in and of the following when the network or the server is at fault: the real modules
// on the real transport over TLS, with a light.

#include "adapters/curl/CurlTransport.h"
#include "fakes/CarelessOpenSsl.h"
#include "fakes/Hurry.h"
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"
#include "server/RawServer.h"
#include "support/Text.h"

#include <openssl/ssl.h>

#include <regex>

namespace {

using Reply = RawServer::Reply;
using State = vellux::ChannelState;
using vellux::HttpRequest;
using vellux::HttpResponse;
using vellux::simulator::CertificateAuthority;

// One answer of a sign-in and of the first event: its path, and how many of that path come before it.
struct Place {
    const char* strName;
    const char* strPath;
    int nBefore;
};
constexpr Place kPlaces[] = {
    {"token", "/WebTicket/oauthtoken", 0}, {"user", "/oauth/user", 0},   {"applications", "/ucwa/apps", 0},
    {"available", "/ucwa/available", 0},   {"again", "/ucwa/apps", 1},   {"presence", "/ucwa/presence", 0},
    {"requery", "/ucwa/presence", 1},      {"events", "/ucwa/poll?1", 0}};

void PrintTo(const Place& place, std::ostream* stream) {
    *stream << place.strName;
}

class FaultsFixture : CarelessOpenSsl, public ProgramFixture {
protected:
    FaultsFixture() : ProgramFixture(std::make_unique<vellux::CallQueue>(), kNoProgram) {
        makeProgram(hurry, desktop);
        program->start();
        plugInFramed();
        observeControls();
        ui().setSyncMode(*ui().buttonSelectSyncMode());
    }
    ~FaultsFixture() override { endProgram(); }
    /// One turn: polls that are refused at once never leave the queue empty.
    void runPending() override { mainThread.runPending(); }
    RawServer::Tls secure() const { return {*authority.issueServerIdentity()}; }

    /// What an honest server says at a place. In the second batch and later nothing is new.
    std::string bodyAt(const std::string& strPath, int nBefore) const {
        if (strPath == "/WebTicket/oauthtoken")
            return R"({"token_type":"Bearer","access_token":"T0k3n"})";
        if (strPath == "/oauth/user")
            return R"({"_links":{"applications":{"href":"https://pool.example/ucwa/apps"}}})";
        if (strPath == "/ucwa/presence")
            return nBefore == 0 ? R"({"availability":"Online"})" : R"({"availability":"Busy"})";
        if (strPath == "/ucwa/poll?1")
            return batch("/ucwa/poll?2");
        return R"({"_links":{"events":{"href":"/ucwa/poll?1"}},"_embedded":{"me":{"_links":{"presence":)"
               R"({"href":"/ucwa/presence"},"makeMeAvailable":{"href":"/ucwa/available"}}}}})";
    }
    /// Server threads. The fault once, or for as long as it is there.
    Reply replyTo(const std::string& strRequest) {
        const std::string strTarget = vellux::split(strRequest, " ").at(1);
        const std::lock_guard lock(mutex);
        for (const Place& place : kPlaces)
            if (strTarget.ends_with(place.strPath)) {
                const int nBefore = counts[place.strPath]++;
                if (faults.contains({place.strPath, nBefore}))
                    return faults.at({place.strPath, nBefore});
                if (faults.contains({place.strPath, -1}))
                    return faults.at({place.strPath, -1});
                if (strTarget.ends_with("/ucwa/available"))
                    return {RawServer::send("HTTP/1.1 204 No Content\r\n\r\n")};
                return RawServer::answer(bodyAt(place.strPath, nBefore));
            }
        return {RawServer::waitForGo()}; // the next poll
    }
    void setFault(const char* strPath, int nBefore, Reply reply) {
        const std::lock_guard lock(mutex);
        faults = {{{strPath, nBefore}, std::move(reply)}};
    }

    /// The alerts, changes of colour and waits since the sign-in began, in order, a word each.
    std::string story() {
        static const std::map<std::string, std::string> words = {
            {kConnectionAlert, "unreachable"},
            {"alert Failed to get OAuthToken", "no-token"},
            {"alert Failed to get ApplicationServiceURL", "no-applications"},
            {"alert Failed to do SetupApplicationsAndGetPresenceURL", "no-presence"},
            {"report 55534243004002ef", "red"},
            {"report 55534243004002df", "green"},
            {"report 55534243004002ff", "off"},
            {"sleep 0.5", "wait"}};
        std::string strStory;
        for (const std::string& strLine : journal.lines({"alert", "report", "sleep"})) {
            const auto found = words.find(strLine);
            const std::string strWord = found == words.end() ? strLine : found->second;
            if (!strLine.starts_with("report") || !strStory.ends_with(strWord))
                strStory += (strStory.empty() ? "" : " ") + strWord;
        }
        return strStory;
    }
    void signIn(const std::string& strHost) {
        journal.clear();
        {
            const std::lock_guard lock(mutex);
            counts.clear();
        }
        type(strHost, "CORP\\pat", "secret");
        ui().onConnectButtonClicked(*ui().buttonConnect());
        runUntil([this] { return journal.count("connect enabled") > 0; }, "the sign-in's end");
    }
    /// Waits until the story has come to this, and looks at what the user sees.
    void expect(const std::string& strStory, const std::string& strButton, State state) {
        runUntil([&] { return story() == strStory && client().channel().get().state == state; },
                 strStory.c_str());
        EXPECT_EQ(story(), strStory);
        EXPECT_EQ(ui().buttonConnect()->title(), strButton);
    }
    /// Disconnects if connected: the light goes off, and nothing comes afterwards.
    void disconnect() {
        if (ui().buttonConnect()->title() != "Disconnect")
            return;
        journal.clear();
        ui().onConnectButtonClicked(*ui().buttonConnect());
        runPending();
        EXPECT_EQ(story(), "off");
        EXPECT_EQ(ui().buttonConnect()->title(), "Connect");
        EXPECT_EQ(client().channel().get().state, State::Closed);
    }

    const CertificateAuthority authority = *CertificateAuthority::create();
    std::mutex mutex;
    std::map<std::string, int> counts;                   // requests of each path
    std::map<std::pair<std::string, int>, Reply> faults; // -1: at all of them
    RawServer elsewhere{{}, secure()}, plain{{}};        // where nobody must go
    RawServer server{{}, secure(), [this](const std::string& strRequest) { return replyTo(strRequest); }};
    vellux::Shared<std::string> strProxy{""};
    vellux::CurlTransport curl{
        mainThread, {authority.pem(), true, [this](const std::string&, bool) { return strProxy.get(); }}};
    Hurry hurry{curl};
};

// ---- bodies ----

Reply cut(const std::string& strBody, std::size_t nClaimed, const RawServer::Step& end) {
    return {RawServer::send("HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(nClaimed) + "\r\n\r\n" +
                            strBody),
            RawServer::pause(), end};
}

const std::map<std::string, std::function<Reply(const std::string&)>> kBodyFaults = {
    {"reset", [](const auto& s) { return cut(s.substr(0, s.size() / 2), s.size(), RawServer::reset()); }},
    {"long", [](const auto& s) { return cut(s, s.size() + 9, RawServer::close()); }},
    {"short", [](const auto& s) { return cut(s, s.size() / 2, RawServer::close()); }},
    {"drip",
     [](const auto&) {
         return Reply{RawServer::send("HTTP/1.1 200 OK\r\nContent-Length: 9999\r\n\r\n"),
                      RawServer::send("{"), RawServer::pause(), RawServer::again()};
     }},
    {"empty", [](const auto&) { return RawServer::answer(""); }},
    {"page", [](const auto&) { return RawServer::answer("<html>"); }},
    {"latin", [](const auto&) { return RawServer::answer("{\"a\":\"\xE9\"}"); }},
    {"large", [](const auto& s) { return RawServer::answer(std::string((16U << 20) - s.size(), ' ') + s); }},
    {"endless", [](const auto&) {
         return Reply{RawServer::send("HTTP/1.1 200 OK\r\n\r\n"), RawServer::send(std::string(1 << 18, 'x')),
                      RawServer::again()};
     }}};

/// At which place, after which faults: what happens, whether the user is connected, and whether the channel
/// is open.
struct BodyRow {
    const char* strPlace;
    const char* strFaults;
    const char* strStory;
    bool bConnected = false;
    State state = State::Closed;
};
constexpr BodyRow kBodyRows[] = {
    {"token", "reset long drip endless", "unreachable no-token"},
    {"token", "short empty page latin", "no-token"},
    {"token", "large", "green red", true, State::Open},
    {"user", "reset long drip endless", "unreachable no-applications"},
    {"user", "short empty page latin", "no-applications"},
    {"user", "large", "green red", true, State::Open},
    {"applications", "reset long drip endless", "unreachable no-presence"},
    {"applications", "short empty page latin", "no-presence"},
    {"applications", "large", "green red", true, State::Open},
    // Of this one a body counts, whatever comes beside it; without a text in it the registration is repeated.
    {"available", "reset drip endless short page", "no-presence"},
    {"available", "long empty latin large", "green red", true, State::Open},
    {"again", "reset long drip endless", "unreachable no-presence"},
    {"again", "short empty page latin", "no-presence"},
    {"again", "large", "green red", true, State::Open},
    {"presence", "reset long drip endless short empty page latin", "off red", true, State::Open},
    {"presence", "large", "green red", true, State::Open},
    {"requery", "reset long drip endless short empty page latin", "green", true, State::Ended},
    {"requery", "large", "green red", true, State::Open},
    {"events", "reset endless", "green wait red", true, State::Open},
    {"events", "long", "green red wait", true, State::Open},
    {"events", "short empty page latin", "green", true, State::Ended},
    {"events", "drip", "green", true, State::Open},
    {"events", "large", "green red", true, State::Open},
};

class BodyFaultsFixture : public FaultsFixture, public testing::WithParamInterface<Place> {};

TEST_P(BodyFaultsFixture, AreSurvived) {
    const Place& place = GetParam();
    for (const BodyRow& row : kBodyRows) {
        if (row.strPlace != std::string_view(place.strName))
            continue;
        for (const std::string& strFault : vellux::split(row.strFaults, " ")) {
            SCOPED_TRACE(strFault);
            const std::string strWhole = bodyAt(place.strPath, place.nBefore);
            setFault(place.strPath, place.nBefore, kBodyFaults.at(strFault)(strWhole));
            const bool bPoll = place.strName == std::string_view("events");
            hurry.strPath.set(strFault == "drip" && !bPoll ? place.strPath : "none");
            hurry.nUnhurried = place.nBefore;
            signIn(server.host());
            expect(row.strStory, row.bConnected ? "Disconnect" : "Connect", row.state);
            if (bPoll && strFault == "drip") {
                const int nPieces = server.repetitions();
                runUntil([&] { return server.repetitions() >= nPieces + 4; }, "pieces that drip");
                expect(row.strStory, "Disconnect", row.state);
            }
            const int nOpen = server.openConnections();
            disconnect();
            if (bPoll && strFault == "drip")
                runUntil([&] { return server.openConnections() < nOpen; }, "the end of the drip");
        }
    }
}
INSTANTIATE_TEST_SUITE_P(, BodyFaultsFixture, testing::ValuesIn(kPlaces),
                         [](const auto& place) { return place.param.strName; });

// ---- connections ----

class ConnectionFaultsFixture : public FaultsFixture {
protected:
    struct Fault {
        const char* strName;
        std::function<void(const char* strPath)>
            begin;                           // at the requests of this path, if it is one of answers
        const char* strAbsentHost = nullptr; // typed; or the proxy of what comes later
        bool bIsSlow = false;                // so that the time limit must be short
    };
    std::function<void(const char*)> presenting(std::optional<vellux::simulator::Identity> identity,
                                                int nVersion = 0) {
        return [this, tls = std::make_shared<RawServer::Tls>(RawServer::Tls{std::move(*identity), nVersion})](
                   const char*) { server.present(*tls); };
    }
    std::function<void(const char*)> redirecting(const std::string& strUrl) {
        return [this, strUrl](const char* strPath) {
            setFault(strPath, -1, RawServer::redirect(strUrl, "307 Temporary Redirect"));
        };
    }
    void mend() {
        server.present(secure());
        server.fallSilent(false);
        setFault("", 0, {});
        strProxy.set("");
        hurry.strPath.set("none");
        hurry.nUnhurried = 0;
    }

    static constexpr const char* kNames = CertificateAuthority::kLoopbackNames;
    const CertificateAuthority stranger = *CertificateAuthority::create();
    const Fault kFaults[10] = {
        {"refused", [](const char*) {}, "127.0.0.1:1"},
        {"unresolvable", [](const char*) {}, "nowhere.invalid", true},
        {"silent", [this](const char*) { server.fallSilent(true); }, nullptr, true},
        {"expired", presenting(authority.issueServerIdentity(kNames, std::chrono::minutes(-1)))},
        {"self-signed", presenting(CertificateAuthority::createSelfSigned())},
        {"of an unknown authority", presenting(stranger.issueServerIdentity())},
        {"for another name", presenting(authority.issueServerIdentity("DNS:other.example"))},
        {"TLS 1.1", presenting(authority.issueServerIdentity(), TLS1_1_VERSION)},
        {"redirect to another host", redirecting(elsewhere.origin() + "/")},
        {"redirect to http", redirecting(plain.origin() + "/")},
    };
};

TEST_F(ConnectionFaultsFixture, EndASignIn) {
    for (const Fault& fault : kFaults) {
        SCOPED_TRACE(fault.strName);
        mend();
        fault.begin("/WebTicket/oauthtoken");
        hurry.strPath.set(fault.bIsSlow ? "/oauthtoken" : "none");
        const std::size_t nRequests = server.requests().size();
        signIn(fault.strAbsentHost == nullptr ? server.host() : fault.strAbsentHost);
        expect("unreachable no-token", "Connect", State::Closed);
        const bool bReached = std::string_view(fault.strName).starts_with("redirect");
        EXPECT_EQ(server.requests().size(), nRequests + (bReached ? 1 : 0));
    }
    EXPECT_EQ(elsewhere.requests().size() + plain.requests().size(), 0U);
}

TEST_F(ConnectionFaultsFixture, AreWaitedOutWhileFollowing) {
    for (const Fault& fault : kFaults) {
        SCOPED_TRACE(fault.strName);
        mend();
        // With a word of its answer, or else curl would try once more by itself.
        setFault("/ucwa/poll?1", 0,
                 {RawServer::send("HTTP/1.1 200 OK\r\n"), RawServer::waitForGo(), RawServer::reset()});
        signIn(server.host());
        expect("green", "Disconnect", State::Open);
        const auto isPoll = [](const std::string& strRequest) {
            return strRequest.starts_with("GET /ucwa/poll?1");
        };
        runUntil([&] { return isPoll(server.requests().back()) && server.openConnections() == 1; },
                 "the poll alone");
        setFault("", 0, {});
        fault.begin("/ucwa/poll?1");
        hurry.strPath.set(fault.bIsSlow ? "/ucwa/poll" : "none");
        if (fault.strAbsentHost != nullptr)
            strProxy.set("http://" + std::string(fault.strAbsentHost));
        server.go();
        runUntil([this] { return journal.count("sleep 0.5") >= 3; }, "vain attempts");
        mend();
        runUntil([this] { return story().ends_with("red"); }, "the light");
        EXPECT_EQ(std::regex_replace(story(), std::regex("( wait)+"), " wait"), "green wait red");
        EXPECT_EQ(ui().buttonConnect()->title(), "Disconnect");
        disconnect();
    }
    EXPECT_EQ(elsewhere.requests().size() + plain.requests().size(), 0U);
}

// ---- links ----

// A token that follows a link in clear or to another host, or goes to the host of a sign-in that overlaps.
TEST_F(FaultsFixture, TokensStayWhereTheyWereIssued) {
    const std::string strOther = elsewhere.host();
    const std::vector<std::tuple<Place, std::string, std::string, std::string>> rows = {
        {kPlaces[1], "https://pool.example", "http://pool.example", "unreachable no-presence"},
        {kPlaces[1], "https://pool.example", "https:///" + strOther, "unreachable no-presence"},
        {kPlaces[1], "https://pool.example", "https://" + strOther + "@" + strOther,
         "green red"}, // made the typed host
        {kPlaces[2], "/ucwa/available", "@" + strOther + "/", "no-presence"},
        {kPlaces[4], "/ucwa/presence", ":443@" + strOther + "/", "off"},
        {kPlaces[4], "/ucwa/poll?1", "@" + strOther + "/", "green wait wait"},
        {kPlaces[7], "/ucwa/poll?2", ":1@" + strOther + "/", "green red wait wait"},
    };
    for (const auto& [place, strLink, strOddLink, strExpected] : rows) {
        const std::string& strStory = strExpected; // a lambda takes no structured binding
        SCOPED_TRACE(strOddLink);
        // Of polls each: curl repeats one by itself on a connection that has just gone.
        const bool bPoll = std::string_view(place.strName) == "events";
        setFault(
            place.strPath, bPoll ? -1 : place.nBefore,
            RawServer::answer(vellux::replaceAll(bodyAt(place.strPath, place.nBefore), strLink, strOddLink)));
        signIn(server.host());
        runUntil([&] { return story().starts_with(strStory); }, strStory.c_str());
        disconnect();
    }
    // Two sign-ins overlap, here and elsewhere: the poll combines the link of the first with the token of the
    // other.
    const std::string strHost = server.host();
    setFault("", 0, {});
    elsewhere.addReply(RawServer::answer(R"({"token_type":"Bearer","access_token":"other"})"));
    const auto strToken = client().httpPost_GetOAuthToken(strHost, "u", "p");
    EXPECT_EQ(client().httpPost_GetOAuthToken(strOther, "u", "p"), "Bearer other");
    EXPECT_TRUE(client().httpPost_SetupApplicationsAndGetPresenceURL(
        strHost, "https://" + strHost + "/ucwa/apps", strToken));
    journal.clear();
    client().httpGet_EventChannels();
    runUntil([this] { return story().starts_with("wait wait"); }, "vain attempts");
    client().abortEventChannelConnection();
    for (const std::string& strRequest : server.requests())
        EXPECT_EQ(strRequest.find("Bearer other"), std::string::npos) << strRequest;
    EXPECT_EQ(elsewhere.requests().size(), 1U);
    EXPECT_EQ(plain.connections(), 0);
}

} // namespace
