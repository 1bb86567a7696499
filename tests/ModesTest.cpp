// Manual and sync mode: order of effects, and the handlers of the lists and of the flash-on-call box.

#include "fakes/LightFixture.h"
#include "fakes/Watchdog.h"

namespace {

const std::string kSlow = "0.75", kMedium = "0.34999999403953552", kFast = "0.10000000149011612"; // seconds

class ModesFixture : public LightFixture {
protected:
    void setManualMode() { ui().setManualMode(*ui().buttonSelectManualMode()); }
    void setSyncMode() { ui().setSyncMode(*ui().buttonSelectSyncMode()); }

    /// The user's choice, and this is what the light shows before the action ends.
    void expectChoice(Choice choice, std::int64_t nPosition, const Lines& expected) {
        journal.clear();
        choose(choice, nPosition);
        EXPECT_EQ(journal.lines({"report", "alert", "request"}), expected) << choice << " " << nPosition;
        if (choice == FlashOnCall) {
            EXPECT_EQ(ui().syncModeColorList()->isEnabled(), nPosition == 1);
            EXPECT_EQ(ui().syncModeFlashSpeedList()->isEnabled(), nPosition == 1);
        }
    }
    /// The same on a framed light, and a cycle of the worker that it starts: its period and all colours.
    void expectWorker(Choice choice, std::int64_t nPosition, const std::string& strPeriod,
                      const char* strShown, const char* strColours) {
        expectChoice(choice, nPosition, framed(strShown));
        clock.passHalves(2);
        EXPECT_EQ(journal.lines({"report"}), framed(strColours)) << choice << " " << nPosition;
        EXPECT_EQ(journal.lines({"sleep"}), Lines(3, "sleep " + strPeriod)) << choice << " " << nPosition;
        endWorkers();
    }
    /// Lets both workers end: a handler that waits for one may be called only then.
    void endWorkers() {
        ui().quitManualFlashingThread();
        ui().quitSyncFlashingThread();
        clock.letRun();
        ui().waitForManualFlashingThreadToExit();
        ui().waitForSyncFlashingThreadToExit();
        clock.hold();
    }

    const Watchdog watchdog{"a thread that should not have been started, or should have ended"};
};

// Any effect left out, doubled or moved: the channel aborted after the light changed, a control still usable,
// the sync flash stopped late, the speed handler run once only (it runs before and after the colour).
TEST_F(ModesFixture, EffectsInOrder) {
    plugInV30();
    scriptServer(R"({"availability":"Busy"})");
    connect();
    ui().setIndexOfManualModeColorList(5);
    ui().setIndexOfManualModeFlashSpeedList(3);
    observeControls(true);
    journal.clear();
    const auto lines = [](const std::string& strLines, const char* strInputs) {
        return vellux::split(vellux::replaceAll(strLines, "*", strInputs), ", ");
    };
    const std::string strInputs =
        "textFieldLyncServerName *, textFieldUsername *, textFieldPassword *, buttonFlashOnCall *, "
        "buttonLightOffOnAway *, buttonLightOffOnAvailable *, syncModeColorList disabled, "
        "syncModeFlashSpeedList disabled, connect *, ";
    setManualMode();
    Lines expected =
        lines("buttonSelectManualMode state 1, buttonSelectSyncMode state 0, manualModeColorList enabled, "
              "manualModeFlashSpeedList enabled, manualModeColorList selected 5, manualModeFlashSpeedList "
              "selected 3, " +
                  strInputs + "cancel https://lync.example/ucwa/events?ack=1, title Connect, status ",
              "disabled");
    for (const std::string& strReport : v30("ff000000 ff000000 ff000004 ff000024 ff000024 00000024 00000024 "
                                            "00960024 00960020 00960024 00960024"))
        expected.push_back(strReport);
    EXPECT_EQ(journal.take(), expected);
    EXPECT_EQ(client().getPresenceStatus(), "");

    setSyncMode();
    expected =
        lines("buttonSelectManualMode state 0, buttonSelectSyncMode state 1, " + strInputs +
                  "manualModeColorList disabled, manualModeFlashSpeedList disabled, report 009600200000ffff, "
                  "syncModeColorList selected 0, syncModeFlashSpeedList selected 1",
              "enabled");
    Lines told = journal.lines();
    told.resize(expected.size()); // the status monitor goes on from here
    EXPECT_EQ(told, expected);
    runUntilConnectShows("Disconnect");
    EXPECT_EQ(journal.lines({"request", "poll", "alert"}).size(), 5U);
}

// No reconnection, one too many, or one although the user was not connected; one after an arrival in manual
// mode, which applies the mode again and so forgets the connection.
TEST_F(ModesFixture, ReturningToSyncModeReconnectsOnce) {
    setManualMode();
    setSyncMode(); // was not connected
    scriptServer(R"({"availability":"Busy"})");
    connect();
    ui().onConnectButtonClicked(*ui().buttonConnect()); // disconnects
    setManualMode();
    setSyncMode();
    connect();
    setManualMode();
    setSyncMode();
    setSyncMode();
    runUntilConnectShows("Disconnect");
    setManualMode();
    plugInV30();
    setSyncMode();
    vellux::WorkerThread::joinAll(); // would block forever if there were a monitor, which waits for main
    EXPECT_EQ(transport.polls().size(), 3U);
    EXPECT_EQ(ui().buttonConnect()->title(), "Connect");
}

// A hardware flash with a wrong speed, in the wrong order, left out, or of a light that is to be off; a
// steady position that flashes on; nothing selected that changes the speed or the colour; a worker.
TEST_F(ModesFixture, ManualListsOnAV30Light) {
    plugInV30();
    setManualMode(); // red, medium
    expectChoice(ManualSpeed, 3, v30("ff000010 ff000014 ff000024"));
    expectChoice(ManualSpeed, 1, v30("ff000020 ff000024 ff00000c"));
    expectChoice(ManualSpeed, 0, v30("ff000008 ff000008 ff000008 ff000008 ff000008"));
    expectChoice(ManualColour, 5,
                 v30("ff000008 ff000008 00000008 00000008 00960008 00960008 00960008 00960008 00960008"));
    expectChoice(ManualSpeed, 3, v30("00960008 0096000c 00960024"));
    expectChoice(ManualColour, 7, v30("00960020 00960024 00960024 00960024 ff960024 ff960f24 ff000f24"));
    expectChoice(ManualSpeed, -1, v30("ff000f20 ff000f24"));
    expectChoice(ManualColour, -1, v30("ff000f20 ff000f24"));
    expectChoice(ManualColour, 8, v30("ff000f20 ff000f21"));
    expectChoice(ManualSpeed, 2, v30("ff000f21"));
    expectChoice(ManualSpeed, 0, v30("ff000f21 ff000f21"));
    vellux::WorkerThread::joinAll();
}

// A period that is wrong or was widened from double; the older lights not flashed; colour 8 and 7 mixed up: 7
// is "None" in their list, but a colour that shows nothing.
TEST_F(ModesFixture, ManualListsOnAnOlderLight) {
    plugInFramed();
    ui().setIndexOfManualModeFlashSpeedList(-1);
    clock.letRun();
    setManualMode(); // its handler runs twice and waits for the first worker
    endWorkers();
    expectWorker(ManualSpeed, -1, "0", "", "ff ef"); // no period was ever chosen
    expectWorker(ManualSpeed, 1, kSlow, "", "ff ef");
    expectWorker(ManualSpeed, 2, kMedium, "", "ff ef");
    expectWorker(ManualSpeed, 3, kFast, "", "ff ef");
    expectWorker(ManualSpeed, -1, kFast, "", "ff ef"); // as before
    expectWorker(ManualColour, 5, kFast, "bf", "bf ff bf");
    expectWorker(ManualColour, 7, kFast, "", "ff");
    ui().manualModeFlashSpeedList()->selectItemAtIndex(0);
    expectChoice(ManualColour, 2, framed("cf cf"));
    ui().setIndexOfManualModeColorList(8);
    expectChoice(ManualSpeed, 3, {});
    for (const int nType : {0, 5, 8}) {
        asDeviceInfo[0] = static_cast<std::uint8_t>(nType);
        expectChoice(ManualColour, 0, {});
        expectChoice(ManualSpeed, 3, {});
    }
    vellux::WorkerThread::joinAll();
}

// Call flashing without a call or without its box; the colour shown once instead of twice by its own list; a
// box that stops nothing or does not evaluate the presence again.
TEST_F(ModesFixture, SyncListsOnAV30Light) {
    plugInV30();
    expectChoice(SyncSpeed, 1, v30("00000001")); // no call, no box: the flash stops, if any
    presence("Busy", true);
    expectChoice(SyncSpeed, 1, v30("00000001"));
    expectChoice(FlashOnCall, 1, v30("00000001 00000000 ff000000 ff000000 ff000000 ff000004 ff000014"));
    expectChoice(SyncColour, 1,
                 v30("ff000010 ff000010 00000010 00009610 00009610 00009614 00009614 00009614 00009614 "
                     "00009614 00009614"));
    expectChoice(SyncSpeed, 2, v30("00009610 00009610 00009610 00009610 00009610 00009614 00009624"));
    expectChoice(SyncSpeed, 0, v30("00009620 00009620 00009620 00009620 00009620 00009624 0000960c"));
    expectChoice(SyncSpeed, -1, v30("00009608 00009608 00009608 00009608 00009608 0000960c"));
    expectChoice(SyncColour, -1, v30("00009608 0000960c"));
    expectChoice(FlashOnCall, 0, v30("00009608 00009608 00009608 ff009608 ff000008 ff000008"));
    expectChoice(SyncColour, 8, v30("ff000008 ff000008 ff000008 ff000008 ff000008 ff000008"));
    presence("Away", false);
    expectChoice(FlashOnCall, 1, v30("ff000008 ff000008 ff000008 ff003c08 ff003c08"));
    expectChoice(SyncSpeed, 2, v30("ff003c08"));
}

// A sync worker at the wrong speed or with another colour; the colour shown before the first pause.
TEST_F(ModesFixture, SyncListsOnAnOlderLight) {
    plugInFramed();
    presence("Busy", true);
    expectWorker(FlashOnCall, 1, kMedium, "", "ff ef");
    expectWorker(SyncSpeed, 0, kSlow, "", "ff ef");
    expectWorker(SyncSpeed, 2, kFast, "", "ff ef");
    expectWorker(SyncSpeed, -1, kFast, "", "ff ef");
    expectWorker(SyncColour, 1, kFast, "df", "df ff df");
    expectWorker(SyncColour, 7, kFast, "", "ff"); // "None" by name
    expectChoice(FlashOnCall, 0, framed("ef"));
    expectChoice(SyncSpeed, 1, {});
    expectChoice(SyncColour, 1, framed("ef"));
    vellux::WorkerThread::joinAll();
}

// A position beyond the list kept, or clamped by the list before the refill.
TEST_F(ModesFixture, PositionsBeyondTheListsAreClamped) {
    ui().setIndexOfManualModeColorList(8);
    ui().setIndexOfManualModeFlashSpeedList(0);
    ui().setIndexOfSyncModeColorList(8);
    setManualMode();
    observeControls(true);
    const auto light = FakeHidManager::light(0x1130, 1);
    arrive(light); // nine entries until the mode was applied
    EXPECT_EQ(journal.count("manualModeColorList selected 8"), 1U);
    hid.noticeArrival(light);
    runPending();
    EXPECT_EQ(journal.count("manualModeColorList selected 7"), 1U);
    setSyncMode();
    EXPECT_EQ(journal.count("syncModeColorList selected 7"), 1U);
}

// A flash that is not taken up again when its light comes back.
TEST_F(ModesFixture, ALightThatComesBackFlashesOn) {
    const auto light = plugInV30();
    setManualMode();
    remove(light);
    journal.clear();
    arrive(light);
    EXPECT_EQ(reports(),
              v30("ff000015 ff000014 ff000014 ff000014 ff000014 ff000010 ff000010 ff000014 ff000014 ff000014 "
                  "ff000014 ff000014 ff000014 ff000010 ff000014 ff000014"));
}

// A lamp that blinks with the light, or flashes without it, or on a light that refused to.
TEST_F(ModesFixture, LampTellsFlashingAndStandsStill) {
    using Lamp = vellux::LampState;
    const Lamp redFlashing{0, true}, red{0, false}, off{8, false};
    int nChanges = 0;
    const auto observation = ui().lamp().observe([&nChanges] { ++nChanges; });
    const auto light = plugInFramed();
    expectChoice(ManualColour, 0, framed("ef"));
    clock.passHalves(1);
    EXPECT_EQ(ui().lamp().get(), redFlashing);
    nChanges = 0;
    clock.passHalves(6);
    EXPECT_EQ(nChanges, 0);
    endWorkers();
    vellux::WorkerThread::joinAll();
    EXPECT_EQ(ui().lamp().get(), red);
    remove(light);

    plugInV30();
    clock.letRun();
    setManualMode();
    EXPECT_EQ(ui().lamp().get(), redFlashing);
    const auto lampAfter = [this](Choice choice, std::int64_t nPosition) {
        choose(choice, nPosition);
        return ui().lamp().get();
    };
    EXPECT_EQ(lampAfter(ManualSpeed, 0), red);
    hid.onReport = [] { return vellux::HidResult{0xE00002ED}; };
    EXPECT_EQ(lampAfter(ManualSpeed, 1), red);
    hid.onReport = {};
    EXPECT_EQ(lampAfter(ManualSpeed, 1), redFlashing);
    EXPECT_EQ(lampAfter(ManualColour, 8), off);
    EXPECT_EQ(lampAfter(ManualColour, 0), redFlashing);
}

} // namespace
