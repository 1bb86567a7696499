// Lights that refuse reports, hang, or leave in the middle of one.

#include "KernelFixture.h"
#include "adapters/hidraw/HidrawManager.h"
#include "threads/CallQueue.h"

#include <cerrno>

using namespace vellux::simulator;

namespace {

class HangingFixture : public KernelFixture {};

// A light that hangs and takes the program along, also at the end.
TEST_F(HangingFixture, ALightThatHangsIsSurvived) {
    startFollowing();
    auto light = std::make_unique<UsbLight>(kFramedLight, ReportPipe::Control);
    ASSERT_TRUE(comesToShow(*light, LightModel::Framed, "Green"));
    const auto hang = [&](const char* strWord) {
        light->forget();
        light->answer(Answer::Silence);
        m_server->setPresence(strWord);
        ASSERT_TRUE(waitUntil([&] { return !light->attempts().empty(); }));
    };
    hang("Busy");
    light->answer(Answer::Accept); // from the second attempt on
    ASSERT_TRUE(comesToShow(*light, LightModel::Framed, "Red"));
    EXPECT_EQ(light->attempts().size(), 2U);

    hang("Away");
    askProgramToEnd();
    light.reset();
    endProgram();
}

// An error code of the kernel's that is another than the tests of the manager take it for; a node that child
// processes inherit.
TEST_F(HangingFixture, FailuresAreResultCodes) {
    auto light = std::make_unique<UsbLight>(kV30Light, ReportPipe::InterruptOut);
    ASSERT_TRUE(waitUntil([] { return nodes() == 1; }));
    ASSERT_EQ(root("udevadm settle"), 0);
    vellux::CallQueue mainThread;
    vellux::HidrawManager manager(mainThread);
    ASSERT_TRUE(manager.create());
    manager.setDeviceMatchingMultiple({{{"VendorID", kV30Light.nVendorID}}});
    ASSERT_EQ(manager.open(), 0U);
    const auto devices = manager.copyDevices();
    ASSERT_TRUE(devices && devices->size() == 1);
    EXPECT_NE(root("ls -l /proc/self/fd | grep -q hidraw"), 0); // programs that this one starts do not get it
    const Bytes report = {255, 50, 125, 0, 0, 0, 0xFF, 0xFF};   // white
    const auto send = [&] { return manager.deviceSetReport(devices->front(), 0, report); };
    light->answer(Answer::Refuse);
    EXPECT_EQ(send(), static_cast<unsigned>(EPIPE));
    light->answer(Answer::Silence);
    EXPECT_EQ(send(), static_cast<unsigned>(ETIMEDOUT));
    light->answer(Answer::Accept);
    EXPECT_EQ(send(), 0U);
    light.reset();
    EXPECT_EQ(send(), static_cast<unsigned>(ENODEV));
}

} // namespace
