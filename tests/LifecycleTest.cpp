// The application's life from start to end, its alerts and its window.
#include "AlertPopup.h"
#include "fakes/ProgramFixture.h"
#include "fakes/ServerTexts.h"
#include "fakes/WindowControls.h"
#include "support/Text.h"

namespace {

using Lines = Journal::Lines;

const std::string kRed = "report 55534243004002ef", kOff = "report 55534243004002ff", // of a light of type 1
    kCancel = "cancel https://lync.example/ucwa/events?ack=1";
std::atomic<int> nCalls{0}; // to the main thread

class LifecycleFixture : public ProgramFixture {
protected:
    LifecycleFixture() : ProgramFixture(std::make_unique<vellux::CallQueue>([] { ++nCalls; })) {}
    /// Starts with the light present, flashes on a call or by hand, and ends: the journal of the shut-down
    /// ends so, with the devices' release.
    void expectAtShutDown(std::int64_t nVendor, std::int64_t nProduct, bool bManual, Lines expected) {
        hid.present(FakeHidManager::light(nVendor, nProduct));
        delegate().applicationDidFinishLaunching();
        runPending();
        scriptServer(R"({"availability":"Busy","activity":"on-the-phone"})");
        choose(FlashOnCall, 1);
        clock.letRun();
        connect();
        if (bManual)
            ui().setManualMode(*ui().buttonSelectManualMode());
        journal.clear();
        const bool bWorker = nVendor == 0x1130;
        if (bWorker)
            runUntil([this] { return journal.count(kOff) > 0; }, "the flashing worker");
        program->end();
        EXPECT_EQ(contentOf(settingsPath("uistate.txt")), bManual ? "0;1;0;0;0;1;0;2" : "1;1;0;0;0;1;0;2");
        expected.insert(expected.end(), {"hid unregister arrival", "hid unregister removal", "hid unschedule",
                                         "hid close", "transport close"});
        Lines lines = journal.take({"report", "cancel", "hid", "transport"});
        EXPECT_EQ(std::erase(lines, "hid shutdown"), 1U); // before or after a worker's last report
        if (lines.size() > expected.size())               // what came before
            lines.erase(lines.begin(), lines.end() - static_cast<std::ptrdiff_t>(expected.size()));
        EXPECT_EQ(lines, expected);
    }
};

// A start that forgets to keep the system awake, or darkens a light before the system has announced it, or
// not at all.
TEST_F(LifecycleFixture, StartsInOrder) {
    for (int nStart = 0; nStart < 3; ++nStart) {
        if (nStart == 1)
            hid.present(FakeHidManager::light(0x1130, 1));
        delegate().applicationDidFinishLaunching();
        Lines expected =
            vellux::split("desktop activity 16777215 receiving OSC messages|hid create|hid matching|"
                          "hid register arrival|hid register removal|hid schedule|hid open|"
                          "window main front",
                          "|");
        if (nStart == 2) // it was announced before
            expected.insert(expected.end() - 1, kOff);
        EXPECT_EQ(journal.take(), expected);
        EXPECT_TRUE(delegate().activity() && *delegate().activity());
        runPending(); // the arrival: dark, then the colour asked for last, which is none
        EXPECT_EQ(journal.take(), nStart > 0 ? (Lines{kOff, kOff}) : Lines{});
        VelluxReleaseDevices();
        journal.clear();
    }
}

// A platform without activities, or without a device service, that keeps the program from starting.
TEST_F(LifecycleFixture, StartsWithoutActivityAndLights) {
    desktop.bOffersActivity = false;
    hid.bOpenFails = true;
    delegate().applicationDidFinishLaunching();
    EXPECT_FALSE(delegate().activity());
    EXPECT_TRUE(delegate().applicationShouldHandleReopen(true)); // there is no window yet
    VelluxReleaseDevices();
    hid.bCreateFails = true;
    delegate().applicationDidFinishLaunching();
    EXPECT_EQ(journal.count("window main front"), 2U);
    delegate().applicationWillTerminate();
}

// A worker that lights a light again after the end, a long poll left behind, or devices released too early.
TEST_F(LifecycleFixture, ShutDownEndsACallsFlashingOff) {
    expectAtShutDown(0x1130, 1, false, {kRed, kCancel, kOff});
}
TEST_F(LifecycleFixture, ShutDownEndsManualFlashingOff) {
    expectAtShutDown(0x1130, 1, true, {kRed, kOff});
}
TEST_F(LifecycleFixture, ShutDownEndsFlashingByTheLightItselfOff) {
    const std::string strFlashing = "report ff0000100000ffff";
    expectAtShutDown(0x2C0D, 6, false, {strFlashing, strFlashing, kCancel, "report ff0000110000ffff"});
}

// A monitor that shows its colour between the last report and the devices' release.
TEST_F(LifecycleFixture, LightStaysOffOnceSwitchedOffForGood) {
    delegate().applicationDidFinishLaunching();
    plugInFramed();
    delegate().applicationWillTerminate();
    std::int32_t nCount = 0;
    EXPECT_TRUE(VelluxFindDevices(nCount)); // as if they had not yet been released
    ui().displayVelluxColor(0);
    EXPECT_EQ(journal.take({"report"}), Lines{kOff});
}

// An answer that no user gave; the alerts of two failing connections inside each other, since a modal loop
// runs what is queued; a caller that continues before the user has answered, or spins until then.
TEST_F(LifecycleFixture, AlertsAreShownOnMainOneAfterTheOther) {
    AlertPopup& popup = AlertPopup::sharedAlertPopup();
    desktop.nResponse = 1001;
    EXPECT_EQ(popup.display("Vellux", "at once"), 1001);
    desktop.nResponse = 1002;
    EXPECT_EQ(popup.display("Other", ""), 1002);
    EXPECT_EQ(journal.take(), (Lines{"alert at once", "alert  | title Other"}));
    std::atomic<int> nAsking{0}, nAnswered{0};
    int nOpen = 0, nShown = 0;
    desktop.whileAlertIsOpen = [&] {
        EXPECT_TRUE(mainThread.isCurrent());
        EXPECT_EQ(++nOpen, 1);
        EXPECT_LE(nAnswered, nShown++);
        for (int n = 0; n < 20; ++n) {
            journal.waitForChange();
            runPending();
        }
        --nOpen;
    };
    std::vector<std::jthread> callers;
    for (int n = 0; n < 2; ++n)
        callers.emplace_back([&] {
            ++nAsking;
            EXPECT_EQ(popup.display("Vellux", "from a worker"), 1002);
            ++nAnswered;
        });
    while (nAsking < 2)
        journal.waitForChange();
    journal.waitForChange(); // gives both the time to queue theirs
    runUntil([&] { return nAnswered == 2; }, "both answers");
    EXPECT_EQ(journal.take(), (Lines{"alert from a worker", "alert from a worker"}));
    // One may come inside the other's alert, and one that leaves another waiting wakes again.
    EXPECT_LE(nCalls, 6);
}

// An operation of the main thread that runs on another one, and is noticed by chance, if at all.
TEST_F(LifecycleFixture, OtherThreadsEndTheProgram) {
    std::int32_t nCount = 0;
    const std::function<void()> operations[] = {
        [&] { VelluxFindDevices(nCount); },
        VelluxReleaseDevices,
        [this] { client().abortEventChannelConnection(); },
        [this] { ui().deviceUnplugged(); },
        [this] { delegate().applicationShouldHandleReopen(true); },
        [] {
            AlertPopup::sharedAlertPopup().displayAlert({"Vellux", "here"});
        }};
    for (const auto& operation : operations)
        EXPECT_DEATH(std::thread(operation).join(), "of the main thread was called on another thread");
}

// ---- The window ----

using ControlsFixture = ProgramFixture;

// A step of start-up out of order: lists selected before they are filled, a mode set before its defaults.
TEST_F(ControlsFixture, StartUpSetsTheControlsInOrder) {
    observeControls(true);
    ui().initConfig();
    const std::string strExpected =
        "syncModeColorList items 0, manualModeColorList items 0, syncModeColorList items 9, "
        "manualModeColorList items 9, textFieldLyncServerName placeholder, textFieldUsername placeholder, "
        "manualModeColorList selected 0, manualModeFlashSpeedList selected 2, "
        "buttonSelectManualMode state 0, buttonSelectSyncMode state 1, textFieldLyncServerName enabled, "
        "textFieldUsername enabled, textFieldPassword enabled, buttonFlashOnCall enabled, "
        "buttonLightOffOnAway enabled, buttonLightOffOnAvailable enabled, syncModeColorList disabled, "
        "syncModeFlashSpeedList disabled, connect enabled, manualModeColorList disabled, "
        "manualModeFlashSpeedList disabled, syncModeColorList selected 0, syncModeFlashSpeedList selected 1, "
        "window main front";
    EXPECT_EQ(journal.take(), vellux::split(strExpected, ", "));
    EXPECT_EQ(client().getPresenceStatus(), "");
    EXPECT_EQ(ui().buttonConnect()->title(), "Connect");
    vellux::Placeholder placeholder{"Domain\\Username", "Helvetica-Oblique", 13, 0.2F, 0.2F, 0.2F, 0.5};
    EXPECT_EQ(ui().textFieldUsername()->placeholder(), placeholder);
    ASSERT_TRUE(ui().textFieldLyncServerName()->placeholder());
    placeholder.strText = ui().textFieldLyncServerName()->placeholder()->strText;
    EXPECT_EQ(ui().textFieldLyncServerName()->placeholder(), placeholder);
    EXPECT_NE(placeholder.strText, "");
}

// A setter that writes another control's field.
TEST_F(ControlsFixture, EachControlHasItsOwnAccessors) {
    std::vector<std::function<void()>> checks; // after all setters, to notice one field written twice
    control_rows::forEach([&]<typename T>(const ControlRow<T>& row) {
        const auto control = std::make_shared<T>();
        (ui().*row.setter)(control);
        checks.push_back([this, control, &row] { EXPECT_EQ((ui().*row.getter)(), control) << row.pName; });
    });
    for (const auto& check : checks)
        check();
}

// A main window that closes for good, a platform without About, or a web site that is nowhere.
TEST_F(ControlsFixture, SmallActions) {
    ui().onAbout(nullptr);
    ui().openLink(nullptr);
    ui().onExit(nullptr);
    EXPECT_FALSE(ui().windowShouldClose(desktop.main));
    const Lines lines = journal.take();
    ASSERT_EQ(lines.size(), 4U);
    EXPECT_EQ(lines[0], "desktop load AboutDialog");
    const std::string strHere = "desktop open file://"; // there is nothing on the net yet
    ASSERT_TRUE(lines[1].starts_with(strHere)) << lines[1];
    EXPECT_TRUE(std::filesystem::exists(lines[1].substr(strHere.size()))) << lines[1];
    EXPECT_EQ(lines[2], "desktop terminate");
    EXPECT_EQ(lines[3], "window main out");
}

} // namespace
