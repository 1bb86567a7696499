// Lights that come and go while the program is at work.

#include "ScreenReader.h"
#include "World.h"

#include <random>

using namespace vellux::simulator;

namespace {

using namespace std::chrono_literals;

constexpr int kCycles = 25; // for each of the two tests, of which the first few warm up
constexpr int kWarmUp = 5;
constexpr long kGrowth = 128; // KiB; none was ever seen

struct Word {
    const char* strAvailability;
    int nColour;
};
constexpr Word kWords[] = {{"Busy", kRed}, {"Away", kYellow}, {"DoNotDisturb", kPurple}, {"Online", kGreen}};

class Hotplug : public KernelTest {
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

    /// In red, fast: by itself, or by what it is told.
    void comesToFlash(const UhidLight& light, LightModel model) {
        if (model == LightModel::V30) {
            ASSERT_TRUE(comesToShow(light, levelsReport(kColours[kRed], kFlashBit | kFast)));
            return;
        }
        const Bytes off = reportOf(model, kNone), red = reportOf(model, kRed);
        const std::vector<Bytes> flashing = {off, red, off, red, off};
        ASSERT_TRUE(waitUntil([&] { return light.changes().size() >= flashing.size(); }));
        std::vector<Bytes> told = light.changes();
        told.resize(flashing.size());
        EXPECT_EQ(told, flashing);
    }

    std::mt19937 m_random{20}; // the same gaps each time
    std::size_t m_nThreads = 0, m_nHandles = 0;
    long m_nSize = 0;
};

// A light that stays dark or shows an older colour after a plug; a handle or thread that each plug leaves.
TEST_F(Hotplug, EachLightShowsTheLatestPresence) {
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
        ASSERT_TRUE(comesToShow(light, reportOf(kind.model, word.nColour)));
    }
    expectNothingLeftOver();
    EXPECT_LE(m_program->residentSize() - m_nSize, kGrowth);
    endProgram();
}

// The same while a worker or the light itself flashes; with the sanitizer, all that is left over at the end.
TEST_F(Hotplug, EachLightFlashes) {
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

// A call that no light tells of, or that goes on for the light when it is over.
TEST_F(Hotplug, EachLightFlashesOnACall) {
    startFollowing();
    for (const LightKind& kind : {kFramedLight, kV30Light}) {
        SCOPED_TRACE(kind.nVendorID);
        UhidLight light(kind);
        ASSERT_TRUE(comesToShow(light, reportOf(kind.model, kGreen)));
        light.forget();
        m_server->setPresence("Busy", "on-the-phone");
        comesToFlash(light, kind.model);
        m_server->setPresence("Online");
        const bool bLevels = kind.model == LightModel::V30; // it keeps the speed
        ASSERT_TRUE(comesToShow(light, bLevels ? levelsReport(kColours[kGreen], kFast)
                                               : reportOf(kind.model, kGreen)));
    }
    endProgram();
}

// A light that is met before udev has said who may open it, and is taken for one that nobody may: each report is
// then refused fifty times, and the program stands still for seconds.
TEST_F(Hotplug, ALightThatFollowsAnotherIsTakenUpAtOnce) {
    startShowing(kRed);
    auto light = std::make_unique<UhidLight>(kV30Light);
    ASSERT_TRUE(comesToShow(*light, reportOf(LightModel::V30, kRed)));
    for (int nCycle = 0; nCycle < 3; ++nCycle) {
        light.reset();
        light = std::make_unique<UhidLight>(kV30Light);
        ASSERT_TRUE(waitUntil([] { return nodes() == 1; }));
        expectPromptly(*light);
        ASSERT_TRUE(comesToShow(*light, reportOf(LightModel::V30, kRed)));
    }
    endProgram();
}

// A second light that is shown what the first was meant to show, or never gets its turn.
TEST_F(Hotplug, ASecondLightHasItsTurnWithTheNextArrival) {
    startFollowing();
    auto first = std::make_unique<UhidLight>(kFramedLight);
    ASSERT_TRUE(comesToShow(*first, reportOf(LightModel::Framed, kGreen)));
    first->forget();
    const UhidLight second(kV30Light);
    ASSERT_TRUE(comesToShow(*first, reportOf(LightModel::Framed, kGreen)));
    first.reset();
    ASSERT_TRUE(waitUntil([&] { return m_program->lightHandles() == 1; }));
    m_server->setPresence("Busy");
    waitInVain();
    EXPECT_TRUE(second.attempts().empty()); // a removal stops all sending
    const UhidLight third(kFramedLight);
    ASSERT_TRUE(comesToShow(second, reportOf(LightModel::V30, kRed)));
    endProgram();
    EXPECT_TRUE(third.attempts().empty());
}

// Colour lists of the light before, as the person in front of the window sees them.
TEST_F(Hotplug, OrangeComesAndGoesWithTheLightsThatKnowIt) {
    const ScreenReader reader;
    startShowing(kOrange);
    const Bytes off = reportOf(LightModel::Plain, kNone);
    const auto lists = [&](std::size_t nEntries, const char* strEighth) {
        for (const char* strName : {"Colour", "Colour while on a call"}) {
            const std::vector<std::string> entries = reader.entries(strName);
            if (entries.size() != nEntries || entries[7] != strEighth)
                return false;
        }
        return true;
    };
    for (int nCycle = 0; nCycle < 2; ++nCycle) {
        {
            const UhidLight plain(kPlainLight);
            ASSERT_TRUE(comesToShow(plain, off));
            EXPECT_EQ(plain.changes(), std::vector<Bytes>{off});
            EXPECT_TRUE(waitUntil([&] { return lists(8, "None"); }));
        }
        const UhidLight levels(kV30Light);
        ASSERT_TRUE(comesToShow(levels, reportOf(LightModel::V30, kOrange)));
        EXPECT_TRUE(waitUntil([&] { return lists(9, "Orange"); }));
    }
    endProgram();
}

} // namespace
