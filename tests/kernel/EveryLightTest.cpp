// Which devices are lights, and what every colour is on their wires.

#include "KernelFixture.h"

using namespace vellux::simulator;

namespace {

class EveryLightFixture : public KernelFixture, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Colours, EveryLightFixture, testing::Range(int{kRed}, int{kNone} + 1),
                         [](const auto& colour) { return kColours[colour.param]; });

// A light that is not found, is taken for one of another model, is shown another colour, is sent a report of
// another length or with a report ID, or is left on at the end.
TEST_P(EveryLightFixture, ShowsTheColourOnEachLight) {
    const int nColour = GetParam();
    const bool bUsb = nColour == kWhite; // once, since USB takes its time
    startShowing(nColour);
    std::unique_ptr<KernelLight> light;
    LightModel model = LightModel::V30;
    for (const LightKind& kind : kLightKinds) {
        SCOPED_TRACE(testing::Message() << std::hex << kind.nVendorID << ":" << kind.nProductID);
        const auto pipe = kind.nProductID % 2 == 0 ? ReportPipe::Control : ReportPipe::InterruptOut;
        model = kind.model;
        light.reset();
        if (bUsb)
            light = std::make_unique<UsbLight>(kind, pipe);
        else
            light = std::make_unique<UhidLight>(kind);
        const bool bKnown = nColour != kOrange || model == LightModel::V30;
        ASSERT_TRUE(comesToShow(*light, model, kColours[bKnown ? nColour : int{kNone}]));
    }
    endProgram();
    EXPECT_EQ(meaning(model, light->shown()), "None");
}

} // namespace
