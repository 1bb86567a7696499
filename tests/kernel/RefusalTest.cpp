// Lights that refuse reports, hang, or leave in the middle of one.

#include "KernelFixture.h"
#include "adapters/hidraw/HidrawManager.h"
#include "threads/CallQueue.h"

#include <cerrno>

using namespace vellux::simulator;

namespace {

using namespace std::chrono_literals;

constexpr std::size_t kAttempts = 50; // for each report
constexpr auto kPauses = 49 * 10ms;

class PipesFixture : public KernelFixture, public testing::WithParamInterface<ReportPipe> {};
INSTANTIATE_TEST_SUITE_P(Refusal, PipesFixture,
                         testing::Values(ReportPipe::Control, ReportPipe::InterruptOut),
                         [](const auto& pipe) {
                             return pipe.param == ReportPipe::Control ? "Control" : "InterruptOut";
                         });

// A report that is given up too early, or retried without limit or without pauses; a light that is ignored
// after it has refused reports.
TEST_P(PipesFixture, ARefusedReportIsTriedFiftyTimes) {
    startFollowing();
    UsbLight light(kFramedLight, GetParam());
    ASSERT_TRUE(comesToShow(light, LightModel::Framed, "Green"));

    light.answer(Answer::Refuse);
    for (const auto& [strWord, strColour] : {std::pair("Busy", "Red"), std::pair("Away", "Yellow")}) {
        light.forget();
        m_server->setPresence(strWord);
        ASSERT_TRUE(waitUntil([&] { return light.attempts().size() >= kAttempts; }));
        ASSERT_TRUE(comesToShow(light, LightModel::Framed, strColour));
        const auto attempts = light.attempts();
        EXPECT_EQ(attempts.size(), kAttempts);
        EXPECT_EQ(light.changes().size(), 1U);
        EXPECT_GE(attempts.back().time - attempts.front().time, kPauses);
    }

    light.answer(Answer::Accept);
    light.forget();
    m_server->setPresence("DoNotDisturb");
    ASSERT_TRUE(comesToShow(light, LightModel::Framed, "Purple"));
    EXPECT_EQ(light.attempts().size(), 1U);
    endProgram();
    EXPECT_EQ(meaning(LightModel::Framed, light.shown()), "None");
}

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

// Fifty attempts at each report, 5 s for each: a program that can't be ended.
TEST_F(HangingFixture, ALightThatHangsForGoodDoesNotHoldTheEndUp) {
    startFollowing();
    UsbLight light(kFramedLight, ReportPipe::InterruptOut);
    ASSERT_TRUE(comesToShow(light, LightModel::Framed, "Green"));
    light.forget();
    light.answer(Answer::Silence);
    m_server->setPresence("Busy");
    ASSERT_TRUE(waitUntil([&] { return !light.attempts().empty(); }));
    endProgram();
}

// An error code that is lost; a program that blocks on a light that hangs, or never tries it again; a node
// that child processes inherit.
TEST_F(HangingFixture, FailuresAreResultCodes) {
    UsbLight first(kFramedLight);
    ASSERT_TRUE(waitUntil([] { return nodes() == 1; }));
    ASSERT_EQ(root("udevadm settle"), 0);
    auto light = std::make_unique<UsbLight>(kV30Light, ReportPipe::InterruptOut);
    ASSERT_TRUE(waitUntil([] { return nodes() == 2; }));
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
    EXPECT_EQ(send(), 0U);
    EXPECT_EQ(light->shown(), report);
    light->answer(Answer::Refuse);
    EXPECT_EQ(send(), static_cast<unsigned>(EPIPE));
    light->answer(Answer::Silence);
    light->forget();
    for (int nAttempt = 0; nAttempt < 10; ++nAttempt)
        EXPECT_EQ(send(), static_cast<unsigned>(ETIMEDOUT));
    EXPECT_EQ(light->attempts().size(), 2U); // then it is left alone for a while
    light->answer(Answer::Accept);
    ASSERT_TRUE(waitUntil([&] { return send() == 0; }));
    light.reset();
    EXPECT_EQ(send(), static_cast<unsigned>(ENODEV));
    EXPECT_TRUE(first.attempts().empty());
}

} // namespace
