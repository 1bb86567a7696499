// A status monitor at work while main changes modes and ends the program.
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"

#include <random>

namespace {

class ConnectionThreadsFixture : public ProgramFixture {
protected:
    /// A code light that flashes during calls, and a user who is on one: each pass starts a sync worker.
    ConnectionThreadsFixture() {
        delegate().applicationDidFinishLaunching();
        plugInFramed();
        scriptServer(R"({"availability":"Busy","activity":"on-the-phone"})");
        choose(FlashOnCall, 1);
        type("lync.example", "CORP\\pat", "secret");
        clock.letRun();
        journal.clear();
        minded = {"alert"};
    }
    void click() { ui().onConnectButtonClicked(*ui().buttonConnect()); }
    /// What the program's end does after the delegate's shut-down. The light must be off then, and stay so.
    void end() {
        endThreads();
        EXPECT_EQ(journal.lines({"report"}).back(), "report 55534243004002ff");
    }
};

struct StressFixture : ConnectionThreadsFixture, testing::WithParamInterface<unsigned> {};

// Main and the monitor both replace the sync worker; without the gate that makes each replacement whole,
// either waits forever for a worker whose stop flag the other has just cleared. Odds: without the gate, each
// of 6 processes hung within its 100 rounds.
TEST_P(StressFixture, ModesChangeWhileMonitorsShowAPresence) {
    constexpr std::ptrdiff_t kMonitors = 3;
    holdRequests("/me/presence");
    std::size_t nPasses = 0;
    std::minstd_rand random(GetParam());
    for (int nRound = 0; nRound < 100; ++nRound) {
        ui().setManualMode(*ui().buttonSelectManualMode()); // while disconnected, so nothing reconnects
        ui().setSyncMode(*ui().buttonSelectSyncMode());
        choose(FlashOnCall, 1);
        click();
        for (int n = 1; n < kMonitors; ++n)
            ui().processLyncServerConnectionRequest();
        for (int n = 0; n < kMonitors; ++n, ++nPasses)
            reached.acquire();
        goOn.release(kMonitors);
        for (int n = 0; n < 4; ++n)
            if (const auto nAction = random() % 8; nAction == 0)
                ui().setManualMode(*ui().buttonSelectManualMode());
            else if (nAction < 4)
                choose(FlashOnCall, nAction == 1);
            else
                ui().onSyncModeFlashSpeedListSelection(*ui().syncModeFlashSpeedList());
        runUntil(
            [&] {
                if (ui().buttonConnect()->title() == "Disconnect" && transport.polls().size() == nPasses)
                    click();
                return ui().buttonConnect()->title() == "Connect" && transport.polls().size() == nPasses;
            },
            "the monitor's end");
    }
    delegate().applicationWillTerminate();
    end();
}
INSTANTIATE_TEST_SUITE_P(, StressFixture, testing::Range(1U, 7U));

struct TerminationFixture : ConnectionThreadsFixture,
                            testing::WithParamInterface<std::tuple<std::string, int>> {};

// A monitor that outlives the shut-down: it must end, light nothing, open no long poll and show no further
// alert. It is held in a request and let go at some moment of the shut-down, is showing an alert, as another
// one waits to, or is waiting for main.
TEST_P(TerminationFixture, EndsWithTheLightOff) {
    const std::string strPlace = std::get<0>(GetParam());
    const bool bEven = std::get<1>(GetParam()) % 2 == 0;
    std::atomic<bool> bEnding{false};
    holdRequests(strPlace == "off" ? "/me/presence" : strPlace);
    const auto showsBusy = [&] { return ui().textFieldLyncStatus()->text() == "Busy"; };
    hid.onReport = [&] {
        if (strPlace == "off" && bEnding && mainThread.isCurrent()) { // while main sends the last report
            goOn.release(3);
            while (!showsBusy())
                journal.waitForChange();
        }
        return kIOReturnSuccess;
    };
    if (strPlace == "alert") {
        transport.script("/WebTicket/oauthtoken", {FakeHttpTransport::failure()});
        desktop.whileAlertIsOpen = [this] {
            while (journal.lines({"request"}).size() < 2)
                journal.waitForChange();
            journal.waitForChange(); // gives the second one the time to ask for its alert
            delegate().applicationWillTerminate();
            endThreads(); // though the alert is still open
        };
        click();
        ui().processLyncServerConnectionRequest();
        runUntil([this] { return journal.count("hid close") > 0; }, "the end under the alert");
    } else {
        click();
        if (strPlace == "main") // the monitor has started the flashing and waits for main, or is about to
            while (!showsBusy())
                journal.waitForChange();
        else
            reached.acquire();
        if (strPlace != "off" && bEven) // let go just before the end, else held until after it
            goOn.release(3);
        bEnding = true;
        delegate().applicationWillTerminate();
        goOn.release(3);
    }
    end();
    EXPECT_EQ(journal.lines({"alert", "poll"}), strPlace == "alert" ? Lines{kConnectionAlert} : Lines{});
}
INSTANTIATE_TEST_SUITE_P(, TerminationFixture,
                         testing::Combine(testing::Values("/oauthtoken", "/oauth/user", "/ucwa/applications",
                                                          "/me/presence", "off", "main", "alert"),
                                          testing::Range(0, 6)));

} // namespace
