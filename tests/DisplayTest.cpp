// Colour indexes on the first light.

#include "fakes/LightFixture.h"

#include <limits>

namespace {

class DisplayFixture : public LightFixture {
protected:
    Lines show(std::int32_t nColor) {
        EXPECT_EQ(ui().displayVelluxColor(nColor), 0) << nColor;
        return reports();
    }
};

// An index that shows another colour; 7 taken for off on the older lights; an index beyond the table sent; a
// report to a light of no known type.
TEST_F(DisplayFixture, EveryIndex) {
    plugInV30();
    const Lines last =
        v30("ff000000 00009600 ff003c00 80800000 00ffff00 00960000 ff327d00 ff000f00 ff000f01");
    for (std::int32_t nColor = 0; nColor <= 8; ++nColor)
        EXPECT_EQ(show(nColor).back(), last[static_cast<std::size_t>(nColor)]);
    for (const std::int32_t nNowhere : {9, -1, std::numeric_limits<std::int32_t>::min()})
        EXPECT_EQ(show(nNowhere), Lines{}) << nNowhere;
    for (const int nType : {0, 1, 2, 5, 8, 255}) {
        asDeviceInfo[0] = static_cast<std::uint8_t>(nType);
        const bool bKnown = nType == 1 || nType == 2; // the older lights
        for (std::int32_t nColor = 0; nColor <= 8; ++nColor)
            EXPECT_EQ(show(nColor).empty(), !bKnown || nColor == 7) << nType << " " << nColor;
    }
}

// The second light changed as well; lists by the last light, not the first; the driver's result swallowed; an
// index that shows nothing forgotten, so that a light that arrives is given the colour before it.
TEST_F(DisplayFixture, OnlyTheFirstLight) {
    hid.present(FakeHidManager::light(0x1130, 0x1E00, "first"));
    const auto second = FakeHidManager::light(0x2C0D, 6, "second");
    arrive(second);
    journal.clear();
    EXPECT_EQ(ui().syncModeColorList()->numberOfItems(), 8);
    for (const std::int32_t nNothing :
         {7, 9, -1}) { // recorded, so that off is all there is to show on arrival
        EXPECT_EQ(show(0), Lines{"report first 60..00"});
        EXPECT_EQ(show(nNothing), Lines{});
        hid.noticeArrival(second);
        runPending();
        EXPECT_EQ(reports(), (Lines{"report first 73..00", "report first 73..00"})) << nNothing;
    }
    hid.onReport = [] { return vellux::HidResult{0xE00002ED}; };
    EXPECT_EQ(ui().displayVelluxColor(0), static_cast<std::int32_t>(0xE00002ED));
}

// A lamp that shows what the light refused, or what it doesn't know; one that is dark for want of a light.
TEST_F(DisplayFixture, LampShowsWhatTheLightShows) {
    const auto expectLamp = [this](std::int32_t nRequested, std::int32_t nShown) {
        ui().displayVelluxColor(nRequested);
        EXPECT_EQ(ui().lamp().get(), (vellux::LampState{nShown, false})) << nRequested;
    };
    EXPECT_EQ(ui().lamp().get(), vellux::LampState());
    expectLamp(7, 7);
    expectLamp(9, 7);
    expectLamp(2, 2);
    const auto light = plugInFramed();
    expectLamp(7, 2); // knows no orange
    expectLamp(0, 0);
    hid.onReport = [] { return vellux::HidResult{0xE00002ED}; };
    expectLamp(3, 0);
    remove(light);
    expectLamp(3, 3);
    light->nOpenResult = 13;
    arrive(light); // may not be opened
    EXPECT_EQ(ui().lamp().get(), vellux::LampState());
    ui().switchOffForGood();
    expectLamp(1, 8);
}

// A lamp that goes on flashing in its last colour over "None", at which a worker leaves an older light dark;
// one that is lit when the light was switched off on arrival and then given nothing.
TEST_F(DisplayFixture, LampIsDarkWhereNoneLeavesTheLightDark) {
    const vellux::LampState dark;
    const auto light = plugInPlain();
    clock.letRun();
    ui().setManualMode(*ui().buttonSelectManualMode()); // red, flashing
    runUntil([this] { return ui().lamp().get() == vellux::LampState{0, true}; }, "the worker");
    choose(ManualColour, 7);
    runUntil([&] { return ui().lamp().get() == dark; }, "the dark half");
    journal.clear();
    runUntil([&] { return journal.count("report 73..00") >= 4; }, "two cycles more");
    EXPECT_EQ(inWords(reports()).find("Red"), std::string::npos);
    EXPECT_EQ(ui().lamp().get(), dark);
    choose(ManualSpeed, 0);
    choose(ManualColour, 0);
    const vellux::LampState red{0, false};
    runUntil([&] { return ui().lamp().get() == red; }, "the worker's end");
    choose(ManualColour, 7); // steady: the light keeps its red
    EXPECT_EQ(ui().lamp().get(), red);
    journal.clear();
    hid.noticeArrival(light);
    runPending();
    EXPECT_EQ(inWords(reports()).find("Red"), std::string::npos);
    EXPECT_EQ(ui().lamp().get(), dark);
}

} // namespace
