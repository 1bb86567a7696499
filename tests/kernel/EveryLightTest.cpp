// Which devices are lights, and what every colour is on their wires.

#include "World.h"

namespace {

class EveryLight : public KernelTest, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Colours, EveryLight, testing::Range(int{kRed}, int{kNone} + 1),
                         [](const auto& colour) { return kColours[colour.param].strName; });

// Steps that bring a light with levels from one colour to another, the first of them after the off.
std::vector<Bytes> steps(const Colour& from, const Colour& to) {
    Colour now = from;
    std::vector<Bytes> steps = {levelsReport(now, kOffBit), levelsReport(now)};
    for (std::uint8_t Colour::*level : {&Colour::byRed, &Colour::byGreen, &Colour::byBlue}) {
        if (now.*level != to.*level) {
            now.*level = to.*level;
            steps.push_back(levelsReport(now));
        }
    }
    return steps;
}

// What a light is told when it comes, repetitions aside.
std::vector<Bytes> greeting(Family family, const Colour& before, int nColour) {
    if (family == Family::Levels && nColour != kNone)
        return steps(before, kColours[nColour]);
    const Bytes off = family == Family::Levels ? levelsReport(before, kOffBit) : reportOf(family, kNone);
    if (nColour == kNone || nColour == kOrange) // the lights with codes know no orange
        return {off};
    return {off, reportOf(family, nColour)};
}

// A light that is not found, is taken for one of another family, is shown another colour, is sent a report of
// another length or with a report ID, or is left on at the end.
TEST_P(EveryLight, ShowsTheColourOnEachLight) {
    const int nColour = GetParam();
    const bool bUsb = nColour == kWhite; // once all kinds, on USB, which takes its time; else one per family
    startShowing(nColour);
    Colour levels{}; // the lights with levels are told one memory's content
    std::unique_ptr<Light> light;
    Family family = Family::Levels;
    for (const LightKind& kind : kLightKinds) {
        if (!bUsb && kind != kLevelsLight && kind != kFramedLight && kind != kPlainLight)
            continue;
        SCOPED_TRACE(testing::Message() << std::hex << kind.nVendorID << ":" << kind.nProductID);
        const auto pipe = kind.nProductID % 2 == 0 ? ReportPipe::Control : ReportPipe::InterruptOut;
        family = kind.family;
        light.reset();
        if (bUsb)
            light = std::make_unique<UsbLight>(kind, pipe);
        else
            light = std::make_unique<UhidLight>(kind);
        const std::vector<Bytes> expected = greeting(family, levels, nColour);
        ASSERT_TRUE(comesToShow(*light, expected.back()));
        EXPECT_EQ(light->changes(), expected);
        if (family == Family::Levels && nColour != kNone)
            levels = kColours[nColour];
    }
    endProgram();
    EXPECT_TRUE(isOff(family, light->shown()));
}

class OtherDevices : public KernelTest {};

// A report to a keyboard, or to a light that only looks like one of ours.
TEST_F(OtherDevices, AreNeverOpened) {
    constexpr LightKind kOthers[] = {
        {0x1130, 0x0003, 3, Family::Framed}, // a product nobody lists
        {0x1130, 0x0001, 1, Family::Framed}, // other first usages
        {0x1130, 0x1E00, 3, Family::Plain},     {0x2C0D, 0x0003, 3, Family::Levels},
        {0x2C0D, 0x0001, 1, Family::Levels},    // of a known type, but never matched
        {0x1130, 0x0001, 1, Family::Framed, 3}, // its second collection would do
        {0x046D, 0xC31C, 6, Family::Levels},    // somebody's keyboard
    };
    std::vector<std::unique_ptr<UhidLight>> others;
    for (const LightKind& kind : kOthers)
        others.push_back(std::make_unique<UhidLight>(kind));
    ASSERT_TRUE(soon([&] { return nodes() == others.size(); }));
    startShowing(kRed);
    UhidLight light({0x1130, 0x0001, 3, Family::Framed, 6});
    ASSERT_TRUE(comesToShow(light, reportOf(Family::Framed, kRed)));
    endProgram();
    for (const auto& other : others) {
        EXPECT_TRUE(other->attempts().empty());
        EXPECT_FALSE(other->wasOpened());
    }
}

class FortyLights : public KernelTest, public testing::WithParamInterface<bool> {};
INSTANTIATE_TEST_SUITE_P(Programs, FortyLights, testing::Bool(),
                         [](const auto& sanitized) { return sanitized.param ? "Sanitized" : "Plain"; });

// More lights than the table of types has room for: a write behind its end, or a colour on another light.
TEST_P(FortyLights, OnlyTheFirstIsDriven) {
    const std::string strProgram = GetParam() ? sanitizedProgram() : program();
    if (strProgram.empty())
        GTEST_SKIP() << "there is no program with the address sanitizer";
    std::vector<std::unique_ptr<UhidLight>> lights;
    const auto plugTwenty = [&lights] {
        for (int n = 0; n < 20; ++n)
            lights.push_back(std::make_unique<UhidLight>(n % 2 == 0 ? kLevelsLight : kFramedLight));
    };
    plugTwenty();
    ASSERT_TRUE(soon([] { return nodes() == 20; }));
    ASSERT_EQ(root("udevadm settle"), 0);
    startFollowing(strProgram);
    const auto driven = [&lights] {
        std::vector<const Light*> told;
        for (const auto& light : lights)
            if (!light->attempts().empty())
                told.push_back(light.get());
        return told;
    };
    ASSERT_TRUE(soon([&] { return !driven().empty(); }));
    const Light& light = *driven().front();
    plugTwenty();
    ASSERT_TRUE(soon([&] { return m_program->lightHandles() == 40; }));
    m_server->setPresence("Busy");
    const Family family = light.shown().front() == 'U' ? Family::Framed : Family::Levels;
    ASSERT_TRUE(comesToShow(light, reportOf(family, kRed)));
    endProgram();
    EXPECT_TRUE(isOff(family, light.shown()));
    EXPECT_EQ(driven().size(), 1U);
}

} // namespace
