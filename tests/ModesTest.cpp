// Manual and sync mode: order of effects, and the handlers of the lists and of the flash-on-call box.

#include "fakes/LightFixture.h"

namespace {

const std::string kSlow = "0.75", kMedium = "0.34999999403953552", kFast = "0.10000000149011612"; // seconds

class ModesFixture : public LightFixture {
protected:
    void setManualMode() { ui().setManualMode(*ui().buttonSelectManualMode()); }
    void setSyncMode() { ui().setSyncMode(*ui().buttonSelectSyncMode()); }

    /// The user's choice, and this is what the light shows before the action ends.
    void expectChoice(Choice choice, std::int64_t nPosition, const std::string& strExpected) {
        journal.clear();
        choose(choice, nPosition);
        EXPECT_EQ(inWords(journal.lines({"report", "alert", "request"})), strExpected)
            << choice << " " << nPosition;
        if (choice == FlashOnCall) {
            EXPECT_EQ(ui().syncModeColorList()->isEnabled(), nPosition == 1);
            EXPECT_EQ(ui().syncModeFlashSpeedList()->isEnabled(), nPosition == 1);
        }
    }
    /// The same on a framed light, and a cycle of the worker that it starts: its period and all colours.
    void expectWorker(Choice choice, std::int64_t nPosition, const std::string& strPeriod,
                      const char* strShown, const char* strColours) {
        expectChoice(choice, nPosition, strShown);
        clock.passHalves(2);
        EXPECT_EQ(inWords(journal.lines({"report"})), strColours) << choice << " " << nPosition;
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
    const std::string strInputs =
        "textFieldLyncServerName *, textFieldUsername *, textFieldPassword *, buttonFlashOnCall *, "
        "buttonLightOffOnAway *, buttonLightOffOnAvailable *, syncModeColorList disabled, "
        "syncModeFlashSpeedList disabled, connect *, ";
    setManualMode();
    EXPECT_EQ(
        inWords(journal.take()),
        "buttonSelectManualMode state 1, buttonSelectSyncMode state 0, manualModeColorList enabled, "
        "manualModeFlashSpeedList enabled, manualModeColorList selected 5, manualModeFlashSpeedList "
        "selected 3, " +
            vellux::replaceAll(strInputs, "*", "disabled") +
            "cancel https://lync.example/ucwa/events?ack=1, title Connect, status , 2 x Red, Red flashing "
            "unset, 2 x Red flashing fast, 2 x #000000 flashing fast, Blue flashing fast, Blue, "
            "2 x Blue flashing fast");
    EXPECT_EQ(client().getPresenceStatus(), "");

    setSyncMode();
    const std::string strExpected = "buttonSelectManualMode state 0, buttonSelectSyncMode state 1, " +
                                    vellux::replaceAll(strInputs, "*", "enabled") +
                                    "manualModeColorList disabled, manualModeFlashSpeedList disabled, Blue, "
                                    "syncModeColorList selected 0, "
                                    "syncModeFlashSpeedList selected 1";
    // The status monitor goes on from there.
    EXPECT_EQ(inWords(journal.lines()).substr(0, strExpected.size()), strExpected);
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
    expectChoice(ManualSpeed, 3, "Red, Red flashing medium, Red flashing fast");
    expectChoice(ManualSpeed, 1, "Red, Red flashing fast, Red flashing slow");
    expectChoice(ManualSpeed, 0, "5 x Red");
    expectChoice(ManualColour, 5, "2 x Red, 2 x #000000, 5 x Blue");
    expectChoice(ManualSpeed, 3, "Blue, Blue flashing slow, Blue flashing fast");
    expectChoice(
        ManualColour, 7,
        "Blue, 3 x Blue flashing fast, #ff0096 flashing fast, #ff0f96 flashing fast, Orange flashing fast");
    expectChoice(ManualSpeed, -1, "Orange, Orange flashing fast");
    expectChoice(ManualColour, -1, "Orange, Orange flashing fast");
    expectChoice(ManualColour, 8, "Orange, None");
    expectChoice(ManualSpeed, 2, "None");
    expectChoice(ManualSpeed, 0, "2 x None");
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
    expectWorker(ManualSpeed, -1, "0", "", "None, Red"); // no period was ever chosen
    expectWorker(ManualSpeed, 1, kSlow, "", "None, Red");
    expectWorker(ManualSpeed, 2, kMedium, "", "None, Red");
    expectWorker(ManualSpeed, 3, kFast, "", "None, Red");
    expectWorker(ManualSpeed, -1, kFast, "", "None, Red"); // as before
    expectWorker(ManualColour, 5, kFast, "Blue", "Blue, None, Blue");
    expectWorker(ManualColour, 7, kFast, "", "None");
    ui().manualModeFlashSpeedList()->selectItemAtIndex(0);
    expectChoice(ManualColour, 2, "2 x Yellow");
    ui().setIndexOfManualModeColorList(8);
    expectChoice(ManualSpeed, 3, "");
    for (const int nType : {0, 5, 8}) {
        asDeviceInfo[0] = static_cast<std::uint8_t>(nType);
        expectChoice(ManualColour, 0, "");
        expectChoice(ManualSpeed, 3, "");
    }
    vellux::WorkerThread::joinAll();
}

// Call flashing without a call or without its box; the colour shown once instead of twice by its own list; a
// box that stops nothing or does not evaluate the presence again.
TEST_F(ModesFixture, SyncListsOnAV30Light) {
    plugInV30();
    expectChoice(SyncSpeed, 1, "None"); // no call, no box: the flash stops, if any
    presence("Busy", true);
    expectChoice(SyncSpeed, 1, "None");
    expectChoice(FlashOnCall, 1, "None, #000000, 3 x Red, Red flashing unset, Red flashing medium");
    expectChoice(SyncColour, 1, "2 x Red, #000000, 2 x Green, 6 x Green flashing medium");
    expectChoice(SyncSpeed, 2, "5 x Green, Green flashing medium, Green flashing fast");
    expectChoice(SyncSpeed, 0, "5 x Green, Green flashing fast, Green flashing slow");
    expectChoice(SyncSpeed, -1, "5 x Green, Green flashing slow");
    expectChoice(SyncColour, -1, "Green, Green flashing slow");
    expectChoice(FlashOnCall, 0, "3 x Green, #ff9600, 2 x Red");
    expectChoice(SyncColour, 8, "6 x Red");
    presence("Away", false);
    expectChoice(FlashOnCall, 1, "3 x Red, 2 x Yellow");
    expectChoice(SyncSpeed, 2, "Yellow");
}

// A sync worker at the wrong speed or with another colour; the colour shown before the first pause.
TEST_F(ModesFixture, SyncListsOnAnOlderLight) {
    plugInFramed();
    presence("Busy", true);
    expectWorker(FlashOnCall, 1, kMedium, "", "None, Red");
    expectWorker(SyncSpeed, 0, kSlow, "", "None, Red");
    expectWorker(SyncSpeed, 2, kFast, "", "None, Red");
    expectWorker(SyncSpeed, -1, kFast, "", "None, Red");
    expectWorker(SyncColour, 1, kFast, "Green", "Green, None, Green");
    expectWorker(SyncColour, 7, kFast, "", "None"); // "None" by name
    expectChoice(FlashOnCall, 0, "Red");
    expectChoice(SyncSpeed, 1, "");
    expectChoice(SyncColour, 1, "Red");
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
    EXPECT_EQ(
        inWords(reports()),
        "None, 4 x Red flashing medium, 2 x Red, 6 x Red flashing medium, Red, 2 x Red flashing medium");
}

// A lamp that blinks with the light, or flashes without it, or on a light that refused to.
TEST_F(ModesFixture, LampTellsFlashingAndStandsStill) {
    using Lamp = vellux::LampState;
    const Lamp redFlashing{0, true}, red{0, false}, off{8, false};
    int nChanges = 0;
    const auto observation = ui().lamp().observe([&nChanges] { ++nChanges; });
    const auto light = plugInFramed();
    expectChoice(ManualColour, 0, "Red");
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
