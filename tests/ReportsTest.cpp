// Reports of the three families byte by byte, and what happens when a light refuses them.

#include "fakes/LightFixture.h"

namespace {

class ReportsFixture : public ProgramFixture {
protected:
    /// Lights (vendor and product) that are listed and plugged, and that the controller has not touched.
    void addLights(const std::vector<std::int64_t>& ids) {
        for (const std::int64_t nId : ids)
            hid.present(FakeHidManager::light(nId >> 16, nId & 0xFFFF));
        std::int32_t nCount = 0;
        ASSERT_TRUE(VelluxFindDevices(nCount));
        bDevicePlugged = true;
        journal.clear();
    }
    /// The coming reports fail with codes from 1001 on.
    void refuse(unsigned nReports) {
        hid.onReport = [n = 0U, nReports]() mutable { return n < nReports ? 1000 + ++n : 0; };
    }
};

struct Colour {
    VelluxResult (*turnOn)(std::uint8_t);
    const char *strFramed, *strPlain;
    const char* strLevels; // of four V30 reports, the first with the levels before: red 11, blue 33, green 22
};

const Colour kColours[] = {
    {VelluxTurnOnRedLight, "ef", "60", "11332200 ff332200 ff330000 ff000000"},
    {VelluxTurnOnGreenLight, "df", "d8", "11332200 00332200 00339600 00009600"},
    {VelluxTurnOnBlueLight, "bf", "35", "11332200 00332200 00330000 00960000"},
    {VelluxTurnOnYellowLight, "cf", "40", "11332200 ff332200 ff333c00 ff003c00"},
    {VelluxTurnOnMagentaLight, "af", "20", "11332200 80332200 80330000 80800000"},
    {VelluxTurnOnCyanLight, "9f", "17", "11332200 00332200 0033ff00 00ffff00"},
    {VelluxTurnOnWhiteLight, "8f", "07", "11332200 ff332200 ff337d00 ff327d00"},
    {VelluxTurnOnOrangeLight, "", "", "11332200 ff332200 ff330f00 ff000f00"},
    {VelluxTurnOffLight, "ff", "73 73", "11332201"},
};
bool isOrange(const Colour& colour) {
    return colour.turnOn == VelluxTurnOnOrangeLight;
}

// A wrong code or level; the order red, green, blue; the previous colour not shown first; a type left out;
// off sent once to a plain light, or with a frame left in it; orange not refused by the older lights.
TEST_F(ReportsFixture, EveryColourOnEveryFamily) {
    addLights({0x1130'0001, 0x1130'0002, 0x1130'1E00, 0x0E53'2516, 0x0E53'2517, 0x2C0D'0006, 0x2C0D'0003});
    for (const Colour& colour : kColours)
        for (std::uint8_t byIndex = 0; byIndex < 7; ++byIndex) {
            SetRedColorBrightnessLevel(byIndex, 0x11);
            SetGreenColorBrightnessLevel(byIndex, 0x22);
            SetBlueColorBrightnessLevel(byIndex, 0x33);
            TurnOffV30Light(byIndex);
            journal.clear();
            EXPECT_EQ(colour.turnOn(byIndex), isOrange(colour) && byIndex < 3 ? kIOReturnNoDevice : 0);
            EXPECT_EQ(journal.take(), byIndex < 2    ? framed(colour.strFramed)
                                      : byIndex == 2 ? plain(colour.strPlain)
                                                     : v30(colour.strLevels));
        }
}

// A report to a light of unknown type or beyond the type table, or its operations kept in the shared shadow;
// a colour other than orange refused.
TEST_F(ReportsFixture, LightsWithoutATypeAreSentNothing) {
    addLights(std::vector<std::int64_t>(40, 0x2C0D'0006));
    asDeviceInfo[0] = 0;
    asDeviceInfo[1] = 5;
    asDeviceInfo[2] = 8;
    asDeviceInfo[3] = 255;
    for (const int nIndex : {0, 1, 2, 3, 32, 39, 40, 255}) {
        const auto byIndex = static_cast<std::uint8_t>(nIndex);
        for (const Colour& colour : kColours)
            EXPECT_EQ(colour.turnOn(byIndex), isOrange(colour) ? kIOReturnNoDevice : 0) << nIndex;
        for (const auto operation : {TurnOnV30Light, TurnOffV30Light, StopLightFlash, StartLightFlash})
            EXPECT_EQ(operation(byIndex), kIOReturnNoDevice) << nIndex;
        for (const auto operation : {SetRedColorBrightnessLevel, SetGreenColorBrightnessLevel,
                                     SetBlueColorBrightnessLevel, SelectLightFlashSpeed})
            EXPECT_EQ(operation(byIndex, 7), kIOReturnNoDevice) << nIndex;
    }
    EXPECT_NE(HIDSendVelluxControlCode(35, 0x60), kIOReturnSuccess);
    EXPECT_EQ(journal.take(), Lines{});
    EXPECT_EQ(SelectLightFlashSpeed(31, 0), kIOReturnSuccess); // which would leave the bit of speed 7
    EXPECT_EQ(journal.take(), v30("00000008"));
}

// A control bit that is wrong, or cleared by an operation that is not about it; odd speeds (7 lands beyond
// the field, where no other speed clears it).
TEST_F(ReportsFixture, ControlByteOfV30Lights) {
    addLights({0x2C0D'0006});
    const auto selectSpeeds = [](std::initializer_list<std::uint8_t> speeds) {
        for (const std::uint8_t bySpeed : speeds)
            EXPECT_EQ(SelectLightFlashSpeed(0, bySpeed), kIOReturnSuccess);
    };
    EXPECT_EQ(StartLightFlash(0), kIOReturnSuccess);
    EXPECT_EQ(TurnOffV30Light(0), kIOReturnSuccess);
    selectSpeeds({0, 2, 1});
    EXPECT_EQ(TurnOnV30Light(0), kIOReturnSuccess);
    selectSpeeds({3, 4, 5, 6});
    EXPECT_EQ(StopLightFlash(0), kIOReturnSuccess);
    selectSpeeds({255, 7, 0});
    EXPECT_EQ(journal.take(),
              v30("00000004 00000005 0000000d 00000025 00000015 00000014 00000024 0000002c 00000034 "
                  "0000003c 00000038 00000000 00000040 00000048"));
}

// A shadow per light; one that discovery, release or a failed send forgets; a report to another light; going
// on with a colour after a report that failed.
TEST_F(ReportsFixture, AllV30LightsShareTheShadow) {
    hid.present(FakeHidManager::light(0x2C0D, 6, "first"));
    hid.present(FakeHidManager::light(0x0E53, 0x2516, "second"));
    addLights({});
    SetBlueColorBrightnessLevel(0, 0xB1);
    StartLightFlash(1);
    VelluxReleaseDevices();
    addLights({});
    SetRedColorBrightnessLevel(1, 0xE0);
    EXPECT_EQ(journal.take(), Lines{"report second e0b100040000ffff"});
    refuse(50);
    EXPECT_EQ(TurnOnRGBLights(0, 1, 2, 3), 1050U);
    EXPECT_EQ(journal.take(), Lines(50, "report first e0b100040000ffff"));
    refuse(50);
    EXPECT_EQ(SetRedColorBrightnessLevel(0, 0x77), 1050U);
    bDevicePlugged = false;
    EXPECT_EQ(SetGreenColorBrightnessLevel(0, 0x99), kIOReturnNoDevice);
    bDevicePlugged = true;
    journal.clear();
    TurnOffV30Light(0);
    EXPECT_EQ(journal.take(), Lines{"report first 77b199050000ffff"});
}

// Too many or too few attempts or pauses; the pause after a success left out; another failure's code
// returned, or the first of the two results of off on a plain light.
TEST_F(ReportsFixture, RefusedReportsAreTriedAgain) {
    addLights({0x1130'0001, 0x1130'1E00});
    refuse(50);
    EXPECT_EQ(VelluxTurnOffLight(1), kIOReturnSuccess);
    refuse(100);
    EXPECT_EQ(VelluxTurnOffLight(1), 1100U);
    journal.clear();
    clock.bJournalShortSleeps = true;
    for (const std::uint32_t nFailures : {0U, 1U, 48U, 49U, 50U}) {
        refuse(nFailures);
        EXPECT_EQ(VelluxTurnOnRedLight(0), nFailures == 50 ? 1050 : 0);
        Lines expected;
        for (std::uint32_t n = 1; n <= std::min(nFailures + 1, 50U); ++n) {
            expected.push_back("report 55534243004002ef");
            if (n < 50)
                expected.push_back("sleep 0.01");
        }
        EXPECT_EQ(journal.take(), expected) << nFailures << " failures";
    }
}

// A send without a light, or to the wrong one; the two codes mixed up.
TEST_F(ReportsFixture, ResultCodesWithoutALight) {
    addLights({0x1130'0001, 0x2C0D'0006});
    const auto list = gDeviceCFArrayRef.get();
    const auto expectNoDevice = [](const char* strWhy) {
        EXPECT_EQ(HIDSendVelluxControlCode(0, 0x60), kIOReturnNoDevice) << strWhy;
        EXPECT_EQ(HIDSendVellux30ControlCode(1, 1, 2, 3, 4, 5, 6), kIOReturnNoDevice) << strWhy;
        bDevicePlugged = true;
        gnNumberOfVelluxDevices = 2;
    };
    bDevicePlugged = false;
    expectNoDevice("not plugged");
    gnNumberOfVelluxDevices = 0;
    expectNoDevice("none counted");
    gDeviceCFArrayRef.set(nullptr);
    expectNoDevice("no list");
    gDeviceCFArrayRef.set(std::make_shared<const vellux::HidDeviceList>());
    expectNoDevice("empty list");
    gDeviceCFArrayRef.set(list);
    asDeviceInfo[2] = 6;
    EXPECT_EQ(HIDSendVelluxControlCode(2, 0x60), kIOReturnBadArgument);
    EXPECT_EQ(VelluxTurnOnRedLight(2), kIOReturnBadArgument);
    EXPECT_EQ(HIDSendVellux30ControlCode(0, 1, 2, 3, 4, 5, 6), kIOReturnNoDevice); // not a V30 light
    EXPECT_EQ(journal.take(), Lines{});
    EXPECT_EQ(HIDSendVellux30ControlCode(1, 1, 2, 3, 4, 5, 6), kIOReturnSuccess);
    EXPECT_EQ(journal.take(), Lines{"report 010302040506ffff"});
    EXPECT_EQ(TurnOnV30Light(1), kIOReturnSuccess); // which knows nothing of these bytes
    EXPECT_EQ(journal.take(), Lines{"report 000000000000ffff"});
}

} // namespace
