// What is said about the following, and the two choices about a server that is away.

#include "app/LossNotice.h"
#include "app/Reconnector.h"
#include "app/UnreachedLight.h"
#include "fakes/FakeTimers.h"
#include "fakes/LightFixture.h"

#include <map>

namespace {

using namespace std::chrono_literals;
using vellux::HttpFailure;
using Phase = vellux::FollowingState::Phase;

class AppFixture : public LightFixture {
protected:
    AppFixture() {
        watchConnect();
        scriptServer(R"({"availability":"Online"})");
    }

    vellux::FollowingState state() { return following.state().get(); }
    /// The phase in a word, "!" when the following counts as lost.
    std::string phase() {
        static const std::map<Phase, std::string> words = {
            {Phase::Manual, "manual"},          {Phase::NotConnected, "not connected"},
            {Phase::Connecting, "connecting"},  {Phase::Following, "following"},
            {Phase::NotReached, "not reached"}, {Phase::Ended, "ended"}};
        return words.at(state().phase) + (state().bLost ? "!" : "");
    }
    void choose(bool bReconnect, bool bLightOff) { choices.set({bReconnect, bLightOff, false}); }
    /// A batch without news of the presence: the following ends.
    void end() {
        client().connectionDidReceiveData(transport.lastPoll(),
                                          R"({"_links":{"next":{"href":"/n"}},"sender":[]})");
        client().connectionDidFinishLoading(transport.lastPoll());
    }
    /// Waits for the end of the attempt that a timer has begun, if one has.
    std::size_t signIns() {
        runUntil(
            [this] {
                return state().phase == Phase::Manual ||
                       (state().phase != Phase::Connecting && isConnectUsable(ui().buttonConnect()->title()));
            },
            "the sign-in's end");
        runPending();
        std::size_t nCount = 0;
        for (const std::string& strLine : journal.lines({"request"}))
            nCount += strLine.find("oauthtoken") != std::string::npos ? 1U : 0U;
        return nCount;
    }
    /// The next attempt is due after this time, and is made.
    void expectAttempt(std::chrono::milliseconds delay) {
        journal.clear();
        timers.pass(delay - 1ms);
        EXPECT_EQ(signIns(), 0U) << delay.count();
        timers.pass(1ms);
        EXPECT_EQ(signIns(), 1U) << delay.count();
    }
    void expectNone() {
        journal.clear();
        timers.pass(24h);
        EXPECT_EQ(signIns(), 0U);
        EXPECT_EQ(timers.untilNext(), std::nullopt);
    }
    void unscript() { transport.script("/WebTicket/oauthtoken", std::vector<vellux::HttpResponse>{}); }

    FakeTimers timers;
    vellux::Observable<vellux::Choices> choices;
    vellux::Following following{mainThread, ui(), client()};
    vellux::Reconnector reconnector{{mainThread, timers, ui(), following, choices, [] { return 1.0; }}};
    vellux::UnreachedLight unreachedLight{{mainThread, timers, ui(), following, choices}};
};

// "Following" while the server is gone, or for good after one failure; an idle poll's end taken for a
// failure; a reason or the first failure's time that is lost; a loss that nobody sees, or that outlives what
// ends it.
TEST_F(AppFixture, TheStateIsTrueAtEachMoment) {
    EXPECT_EQ(phase(), "not connected");
    connect();
    EXPECT_EQ(phase(), "following");
    EXPECT_EQ(state().signIn.strUser + " " + state().signIn.strServer, "CORP\\pat lync.example");
    transport.lastPoll().simulateFailure(HttpFailure::Silent);
    EXPECT_EQ(phase(), "following");
    const auto first = clock.timeOfDay.load();
    transport.lastPoll().simulateFailure(HttpFailure::NoAnswer);
    clock.timeOfDay = first + 1h;
    transport.lastPoll().simulateFailure(HttpFailure::Refused);
    EXPECT_EQ(phase(), "not reached!");
    EXPECT_EQ(state().channel.since, first);
    transport.lastPoll().simulateFailure(HttpFailure::Silent);
    EXPECT_EQ(phase(), "following");
    transport.lastPoll().simulateFailure(HttpFailure::Reset);
    end();
    EXPECT_EQ(phase(), "ended!");
    EXPECT_EQ(state().channel.reason, vellux::EndReason::NoPresenceEvent);
    ui().setManualMode(*ui().buttonSelectManualMode());
    EXPECT_EQ(phase(), "manual");
    ui().setSyncMode(*ui().buttonSelectSyncMode());
    EXPECT_EQ(signIns(), 2U);
    EXPECT_EQ(phase(), "following");
    transport.lastPoll().simulateData("<html>");
    transport.lastPoll().simulateEnd();
    EXPECT_EQ(state().channel.reason, vellux::EndReason::UnreadableAnswer);
    ui().onConnectButtonClicked(*ui().buttonConnect());
    EXPECT_EQ(phase(), "not connected");
    expectNone(); // the choice is off
    journal.clear();
}

// Delays that don't double, never end growing, or start over after a sign-in that does not last; an attempt
// that alerts, leaves the old poll, or touches the light; one that goes on after what ends them.
TEST_F(AppFixture, ReconnectsByItself) {
    const auto light = plugInFramed();
    choose(true, false);
    connect();
    journal.clear();
    end();
    timers.pass(1999ms);
    EXPECT_EQ(journal.lines(), Lines{});
    const auto poll = transport.polls().back();
    journal.clear();
    timers.pass(1ms);
    EXPECT_EQ(signIns(), 1U);
    EXPECT_EQ(phase(), "following");
    EXPECT_EQ(journal.lines({"report"}), framed("df"));
    for (const auto delay : {4s, 8s, 16s}) {
        end();
        expectAttempt(delay);
    }
    timers.pass(1min); // it has settled
    end();
    unscript();
    for (const auto delay : {2s, 4s, 8s, 16s, 32s, 64s, 128s, 256s, 300s, 300s}) {
        expectAttempt(delay);
        EXPECT_EQ(phase(), "not connected!");
    }
    EXPECT_EQ(journal.lines({"alert", "report"}), Lines{});

    // The network is back, again and again.
    journal.clear();
    timers.pass(10s);
    for (int nTime = 0; nTime < 20; ++nTime) {
        reconnector.hurry();
        EXPECT_EQ(signIns(), 1U);
    }
    timers.pass(2s);
    EXPECT_EQ(signIns(), 2U);

    scriptServer(R"({"availability":"Online"})");
    reconnector.hurry();
    timers.pass(2s);
    EXPECT_EQ(signIns(), 3U);
    EXPECT_EQ(phase(), "following");
    transport.lastPoll().simulateFailure(HttpFailure::Refused);
    expectNone(); // the polls are retried anyway
    end();
    transport.script("/WebTicket/oauthtoken", R"({"error":"invalid_grant"})");
    expectAttempt(2s);
    expectNone();

    clock.letRun();
    scriptServer(R"({"availability":"Online"})");
    connect();
    end();
    ui().setManualMode(*ui().buttonSelectManualMode());
    expectNone();
    ui().setSyncMode(*ui().buttonSelectSyncMode());
    EXPECT_EQ(signIns(), 1U);
    end();
    ui().onConnectButtonClicked(*ui().buttonConnect());
    expectNone();
    connect();
    end();
    choose(false, false);
    expectNone();
    EXPECT_EQ(journal.lines({"alert"}), Lines{});
    journal.clear();
}

// A sign-in that manual mode has overtaken: one that fails begins attempts, one that succeeds is told of
// nobody. An alert at a sign-in that nobody has asked for. An attempt that the network's return finds under
// way, and the next one late. A reason that is an earlier batch's.
TEST_F(AppFixture, WhatIsUnderWayWhenTheWorldChanges) {
    minded = {"nothing"};
    clock.letRun();
    choose(true, false);
    connect();
    for (const bool bSucceeds : {true, false}) {
        const auto overtaken = [&](const std::function<void()>& begin,
                                   const std::function<void()>& meanwhile) {
            holdRequests("/WebTicket/oauthtoken");
            begin();
            reached.acquire();
            if (!bSucceeds)
                unscript();
            meanwhile();
            goOn.release();
            runUntil([this] { return ui().buttonConnect()->isEnabled(); }, "its end");
            transport.onRequest = {};
        };
        const auto press = [this] { ui().onConnectButtonClicked(*ui().buttonConnect()); };
        press(); // disconnects
        overtaken(press, [this] { ui().setManualMode(*ui().buttonSelectManualMode()); });
        EXPECT_EQ(phase(), "manual");
        ui().setSyncMode(*ui().buttonSelectSyncMode());
        runPending();
        EXPECT_EQ(phase(), bSucceeds ? "following" : "not connected");
        EXPECT_EQ(state().signIn.strUser, bSucceeds ? "CORP\\pat" : "");
        EXPECT_EQ(journal.count("alert Failed to get OAuthToken"), bSucceeds ? 0U : 1U);
        EXPECT_EQ(timers.untilNext().has_value(), bSucceeds);
    }
    scriptServer(R"({"availability":"Online"})");
    connect();
    ui().setManualMode(*ui().buttonSelectManualMode());
    unscript();
    journal.clear();
    ui().setSyncMode(*ui().buttonSelectSyncMode());
    EXPECT_EQ(signIns(), 1U);
    EXPECT_EQ(journal.lines({"alert"}), Lines{});
    for (const auto delay : {2s, 4s, 8s})
        expectAttempt(delay);
    holdRequests("/WebTicket/oauthtoken");
    timers.pass(16s);
    reached.acquire();
    reconnector.hurry();
    goOn.release();
    signIns();
    transport.onRequest = {};
    scriptServer(R"({"availability":"Online"})");
    expectAttempt(2s);

    transport.lastPoll().simulateData(R"({"_links":{"next":{"href":"/n"}},"sender":[{"events":[
        {"link":{"rel":"presence"},"type":"updated"}]}]})");
    transport.polls()[transport.polls().size() - 2]->simulateEnd();
    transport.lastPoll().simulateEnd();
    EXPECT_EQ(phase(), "ended!");
    EXPECT_EQ(state().channel.reason, vellux::EndReason::Unknown);
}

// A light that goes off too early, in manual mode or without the choice; one that stays dark when the server
// answers.
TEST_F(AppFixture, LightOffWhileTheServerIsNotReached) {
    plugInFramed();
    connect();
    const auto after = [this](std::chrono::milliseconds time) {
        journal.clear();
        timers.pass(time);
        return inWords(reports());
    };
    for (const bool bChosen : {false, true}) {
        choose(false, bChosen);
        transport.lastPoll().simulateFailure(HttpFailure::Refused);
        EXPECT_EQ(after(59s), "");
        transport.lastPoll().simulateFailure(HttpFailure::Refused);
        EXPECT_EQ(after(1s), bChosen ? "None" : "");
        transport.lastPoll().simulateFailure(HttpFailure::Silent);
        EXPECT_EQ(after(0s), bChosen ? "Green" : "");
    }
    transport.lastPoll().simulateFailure(HttpFailure::Refused);
    EXPECT_EQ(after(1min), "None");
    end(); // the server has answered
    EXPECT_EQ(after(0s), "Green");
    ui().onConnectButtonClicked(*ui().buttonConnect());
    connect();
    transport.lastPoll().simulateFailure(HttpFailure::Refused);
    clock.letRun();
    ui().setManualMode(*ui().buttonSelectManualMode());
    journal.clear();
    EXPECT_EQ(timers.untilNext(), std::nullopt);
}

// A notice that never comes, comes too early, twice, in manual mode or after all is well; one that stays; a
// user who learns only of the first half.
TEST_F(AppFixture, ALossIsNotifiedOnce) {
    std::string strNotices;
    const vellux::LossNotice notice({mainThread, timers, following, choices,
                                     [&](const vellux::FollowingState&) { strNotices += phase() + " "; },
                                     [&] { strNotices += "withdrawn "; }});
    const auto taken = [&] {
        runPending();
        return std::exchange(strNotices, "");
    };
    const auto fail = [this] { transport.lastPoll().simulateFailure(HttpFailure::Refused); };
    const auto answer = [this] { transport.lastPoll().simulateFailure(HttpFailure::Silent); };
    connect();
    for (int nTime = 0; nTime < 2; ++nTime) {
        fail();
        timers.pass(59s);
        answer();
        timers.pass(1h);
        EXPECT_EQ(taken(), "");
        fail();
        timers.pass(59999ms);
        fail();
        EXPECT_EQ(taken(), "");
        timers.pass(1ms);
        EXPECT_EQ(taken(), "not reached! ");
        fail();
        timers.pass(1h);
        EXPECT_EQ(taken(), "");
        answer();
        EXPECT_EQ(taken(), "withdrawn ");
    }
    EXPECT_EQ(timers.untilNext(), std::nullopt);
    fail();
    timers.pass(30s);
    end();
    EXPECT_EQ(taken(), "ended! ");
    timers.pass(1h);
    ui().reconnect();
    EXPECT_EQ(taken(), "withdrawn ");
    signIns();
    fail();
    timers.pass(1min);
    end(); // the server was reached, and it is over
    EXPECT_EQ(taken(), "not reached! ended! ");
    ui().reconnect();
    signIns();
    fail();
    timers.pass(1min);
    ui().onConnectButtonClicked(*ui().buttonConnect()); // disconnects
    EXPECT_EQ(taken(), "withdrawn not reached! withdrawn ");

    // About to be mended.
    choose(true, false);
    connect();
    end();
    timers.pass(2s);
    signIns();
    timers.pass(1h);
    EXPECT_EQ(taken(), "");
    unscript();
    end();
    for (int nTime = 0; nTime < 59; ++nTime) {
        timers.pass(1s);
        signIns();
    }
    EXPECT_EQ(taken(), "");
    timers.pass(1s);
    EXPECT_EQ(taken(), "not connected! ");
    transport.script("/WebTicket/oauthtoken", R"({"error":"invalid_grant"})");
    timers.pass(5min);
    signIns();
    timers.pass(24h);
    EXPECT_EQ(taken(), "not connected! ");
    clock.letRun();
    ui().setManualMode(*ui().buttonSelectManualMode());
    EXPECT_EQ(taken(), "withdrawn ");
    EXPECT_EQ(journal.lines({"alert"}), Lines{});
    EXPECT_EQ(timers.untilNext(), std::nullopt);
    journal.clear();
}

} // namespace
