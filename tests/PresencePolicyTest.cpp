// From a presence token to what the light shows, and the status line.

#include "fakes/LightFixture.h"

namespace {

class PresencePolicyFixture : public LightFixture {
protected:
    PresencePolicyFixture() {
        light = plugInFramed();
        observeControls();
    }

    /// The token gives these reports and then, as it is, the status line.
    void expectUpdate(const std::optional<std::string>& strToken, Lines expected) {
        ui().updateVelluxStatusWithPresence(strToken);
        expected.push_back("status " + strToken.value_or(""));
        EXPECT_EQ(journal.take({"report", "status"}), expected);
    }
    void expectBox(Choice box, bool bOn, const Lines& expected) {
        choose(box, bOn);
        EXPECT_EQ(reports(), expected);
    }

    std::shared_ptr<FakeHidDevice> light;
    const std::shared_ptr<vellux::Button> away = ui().buttonLightOffOnAway();
    const std::shared_ptr<vellux::Button> available = ui().buttonLightOffOnAvailable();
};

// A token with the wrong colour; a box that acts on its neighbour's token; the status line in lower case, or
// written before the light.
TEST_F(PresencePolicyFixture, TokensAndBoxes) {
    struct Row {
        std::optional<std::string> strToken;
        const char *strUnticked, *strAwayTicked, *strAvailableTicked;
    };
    const Row rows[] = {{"Away", "cf", "ff", "cf"},
                        {"Online", "df", "df", "ff"},
                        {"BeRightBack", "cf", "cf", "cf"},
                        {"IdleOnline", "cf", "cf", "cf"},
                        {"Busy", "ef", "ef", "ef"},
                        {"IdleBusy", "ef", "ef", "ef"},
                        {"None", "ff", "ff", "ff"},
                        {"DoNotDisturb", "af", "af", "af"},
                        {"OFFLINE", "ff", "ff", "ff"},
                        {"Busy ", "ff", "ff", "ff"},
                        {"", "ff", "ff", "ff"},
                        {std::nullopt, "ff", "ff", "ff"}};
    for (const Row& row : rows) {
        expectUpdate(row.strToken, framed(row.strUnticked));
        away->setState(vellux::Button::kOn);
        expectUpdate(row.strToken, framed(row.strAwayTicked));
        away->setState(vellux::Button::kOff);
        available->setState(vellux::Button::kOn);
        expectUpdate(row.strToken, framed(row.strAvailableTicked));
        available->setState(vellux::Button::kOff);
    }
}

// A box that acts late or on the other token; off instead of nothing for a mixed box.
TEST_F(PresencePolicyFixture, BoxesActAtOnce) {
    expectUpdate("Away", framed("cf"));
    expectBox(OffOnAvailable, true, {});
    expectBox(OffOnAway, true, framed("ff"));
    expectBox(OffOnAway, false, framed("cf"));
    expectUpdate("Online", framed("ff"));
    expectBox(OffOnAway, true, {});
    expectBox(OffOnAvailable, false, framed("df"));
    expectUpdate("BeRightBack", framed("cf"));
    expectBox(OffOnAway, false, {});
    away->setState(vellux::Button::kMixed);
    available->setState(vellux::Button::kMixed);
    expectUpdate("Away", {});
    expectUpdate("Online", {});
    hid.noticeArrival(light); // green was not shown, but it is the current colour
    runPending();
    EXPECT_EQ(reports(), framed("ff df"));
}

// The policy at work in manual mode, or idle without a light, which then does not catch up.
TEST_F(PresencePolicyFixture, ModeAndLight) {
    for (const std::int64_t nState : {vellux::Button::kOff, vellux::Button::kMixed}) {
        ui().buttonSelectSyncMode()->setState(nState);
        ui().updateVelluxStatusWithPresence("Busy");
        EXPECT_EQ(journal.take(), Lines{});
    }
    ui().buttonSelectSyncMode()->setState(vellux::Button::kOn);
    remove(light);
    expectUpdate("Busy", {});
    arrive(light);
    EXPECT_EQ(reports(), framed("ff ef"));
}

// A call that flashes although nobody asked for it; "None" for calls that leaves the light on, or skips the
// presence colour; the presence colour shown during a flashing call, or its token remembered; flashing that
// outlives the call.
TEST_F(PresencePolicyFixture, OnACall) {
    presence("Busy", true);
    expectUpdate("Busy", framed("ef"));
    ui().buttonFlashOnCall()->setState(vellux::Button::kMixed);
    expectUpdate("Busy", framed("ef"));
    ui().setIndexOfSyncModeColorList(8);
    expectUpdate("Busy", framed("ef"));
    ui().buttonFlashOnCall()->setState(vellux::Button::kOn);
    expectUpdate("Away", framed("cf ff"));
    ui().setIndexOfSyncModeColorList(0);
    expectUpdate("Busy", {}); // the worker begins with a pause
    clock.passHalves(2);
    EXPECT_EQ(reports(), framed("ff ef"));
    expectBox(OffOnAway, true, framed("ff")); // still about the token before
    presence("Online", false);
    clock.letRun();
    expectUpdate("Online", framed("ff ef df"));
}

} // namespace
