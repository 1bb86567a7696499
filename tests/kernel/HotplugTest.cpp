// Lights that come and go while the program is at work, or lose their state while the system sleeps.

#include "KernelFixture.h"
#include "UserBus.h"

#include <QDBusMessage>

#include <random>

using namespace vellux::simulator;

namespace {

using namespace std::chrono_literals;

constexpr int kCycles = 25; // for each of the two tests, of which the first few warm up
constexpr int kWarmUp = 5;
constexpr long kGrowth = 128; // KiB; none was ever seen

struct Word {
    const char *strAvailability, *strColour;
};
constexpr Word kWords[] = {
    {"Busy", "Red"}, {"Away", "Yellow"}, {"DoNotDisturb", "Purple"}, {"Online", "Green"}};

class HotplugFixture : public KernelFixture {
protected:
    int upTo(int nMost) { return std::uniform_int_distribution<int>(0, nMost)(m_random); }
    void pause() { std::this_thread::sleep_for(upTo(150) * 1ms); }

    /// What the program holds while no light is there.
    void remember() {
        ASSERT_TRUE(waitUntil([this] { return m_program->lightHandles() == 0 && m_program->isAtRest(); }));
        m_nThreads = m_program->threads();
        m_nHandles = m_program->handles();
        m_nSize = m_program->residentSize();
    }
    void expectNothingLeftOver() {
        ASSERT_TRUE(waitUntil([this] { return m_program->threads() <= m_nThreads; })) << m_program->threads();
        ASSERT_TRUE(waitUntil([this] { return m_program->handles() <= m_nHandles; })) << m_program->handles();
    }

    /// Flashes red, fast: by itself, or by the reports it gets.
    void comesToFlash(const UhidLight& light, LightModel model) {
        if (model == LightModel::V30) {
            ASSERT_TRUE(comesToShow(light, model, "Red flashing fast"));
            return;
        }
        const std::vector<std::string> flashing = {"None", "Red", "None", "Red", "None"};
        ASSERT_TRUE(waitUntil([&] { return light.changes().size() >= flashing.size(); }));
        std::vector<std::string> told;
        for (const Bytes& report : light.changes())
            told.push_back(meaning(model, report));
        told.resize(flashing.size());
        EXPECT_EQ(told, flashing);
    }

    std::mt19937 m_random{20}; // the same gaps each time
    std::size_t m_nThreads = 0, m_nHandles = 0;
    long m_nSize = 0;
};

// A light that stays dark or shows an older colour after a plug; a handle or thread that each plug leaves.
TEST_F(HotplugFixture, EachLightShowsTheLatestPresence) {
    startFollowing();
    for (int nCycle = 0; nCycle < kCycles; ++nCycle) {
        SCOPED_TRACE(nCycle);
        if (nCycle == kWarmUp)
            remember();
        const LightKind& kind = upTo(1) == 0 ? kFramedLight : kV30Light;
        const Word& word = kWords[nCycle % 4];
        const bool bBefore = upTo(1) == 0;
        if (bBefore)
            m_server->setPresence(word.strAvailability);
        pause();
        const UhidLight light(kind);
        pause();
        if (!bBefore)
            m_server->setPresence(word.strAvailability);
        if (upTo(3) == 0) // a bad contact
            continue;
        ASSERT_TRUE(comesToShow(light, kind.model, word.strColour));
    }
    expectNothingLeftOver();
    EXPECT_LE(m_program->residentSize() - m_nSize, kGrowth);
    endProgram();
}

// The same while a worker or the light itself flashes; with the sanitizer, all that is left over at the end.
TEST_F(HotplugFixture, EachLightFlashes) {
    startShowing(kRed, 3, sanitizedProgram().empty() ? program() : sanitizedProgram());
    for (int nCycle = 0; nCycle < kCycles; ++nCycle) {
        SCOPED_TRACE(nCycle);
        if (nCycle == kWarmUp)
            remember();
        pause();
        const LightKind& kind = upTo(1) == 0 ? kFramedLight : kV30Light;
        const UhidLight light(kind);
        if (upTo(3) == 0)
            pause();
        else
            comesToFlash(light, kind.model);
    }
    expectNothingLeftOver();
    endProgram();
}

void prepareForSleep(const QDBusConnection& bus, bool bAboutToSleep) {
    QDBusMessage signal = QDBusMessage::createSignal("/org/freedesktop/login1",
                                                     "org.freedesktop.login1.Manager", "PrepareForSleep");
    signal.setArguments({bAboutToSleep});
    EXPECT_TRUE(bus.send(signal));
}

// A light that stays dark after a resume, or one that is switched on again on the way to sleep.
TEST_F(HotplugFixture, AfterAResumeTheLightIsToldAgain) {
    UserBus bus("DBUS_SYSTEM_BUS_ADDRESS");
    ASSERT_TRUE(bus.connection().registerService("org.freedesktop.login1"));
    startFollowing();
    UhidLight light(kV30Light);
    m_server->setPresence("Busy");
    ASSERT_TRUE(comesToShow(light, LightModel::V30, "Red"));
    light.forget();
    prepareForSleep(bus.connection(), true);
    waitInVain();
    EXPECT_TRUE(light.attempts().empty());
    for (int nNotice = 0; nNotice < 2; ++nNotice) { // it may come twice
        light.forget();
        prepareForSleep(bus.connection(), false);
        ASSERT_TRUE(comesToShow(light, LightModel::V30, "Red"));
    }
    endProgram();
}

} // namespace
