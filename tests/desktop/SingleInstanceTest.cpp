// Starts of the program beside each other, with a session bus or a runtime directory, or both.

#include "desktop/Session.h"

#include <QLocalServer>

#include <ostream>
#include <set>
#include <sys/file.h>

namespace {

/// Starts one after the other: the first, third and so on find the one environment, the others the other.
struct Case {
    const char* strName;
    Environment odd, even;
};

void PrintTo(const Case& starts, std::ostream* pOut) {
    *pOut << starts.strName;
}

class SingleInstanceEnvironmentFixture : public testing::TestWithParam<Case>, public Session {
protected:
    SingleInstanceEnvironmentFixture() {
        if (GetParam().odd.bBus || GetParam().even.bBus)
            startBus();
    }
    std::unique_ptr<ChildProcess> start(const std::string& strToken, const std::string& strOption = "") {
        return Session::start(m_nStarts++ % 2 == 0 ? GetParam().odd : GetParam().even, strToken, strOption);
    }

private:
    int m_nStarts = 0;
};

INSTANTIATE_TEST_SUITE_P(In, SingleInstanceEnvironmentFixture,
                         testing::Values(Case{"Bus", kBus, kBus}, Case{"Runtime", kRuntime, kRuntime},
                                         Case{"Temporary", kTemporary, kTemporary},
                                         Case{"BothThenRuntime", kBoth, kRuntime},
                                         Case{"RuntimeThenBoth", kRuntime, kBoth},
                                         Case{"BusThenBoth", kBus, kBoth}, Case{"BothThenBus", kBoth, kBus}),
                         testing::PrintToStringParamName());

// Two copies that fight over the light, or a second start that does nothing at all.
TEST_P(SingleInstanceEnvironmentFixture, ASecondStartActivatesTheFirstAndEnds) {
    const auto first = holding(start("t1"));
    for (const char* strToken : {"t2", "", "t3"}) {
        const auto second = start(strToken);
        EXPECT_EQ(second->readLine(), "passed");
        EXPECT_EQ(first->readLine(), *strToken != 0 ? std::string("activated ") + strToken : "activated");
        EXPECT_EQ(second->wait(), 0);
    }
}

// A start at log-in that brings up the window of the copy that runs; a question that does, or gets no answer.
TEST_P(SingleInstanceEnvironmentFixture, AHiddenStartAndAQuestionShowNothing) {
    EXPECT_EQ(start("t0", "--status")->readLine(), "none");
    static_cast<void>(start("t0", "--status")); // the next one is odd
    const auto first = holding(start("t1", "--hidden"));
    for (const char* strToken : {"t2", "call"}) {
        EXPECT_EQ(start(strToken)->readLine(), "passed");
        EXPECT_EQ(first->readLine(), std::string("activated ") + strToken);
        EXPECT_EQ(start("hidden", "--hidden")->readLine(), "passed");
        const std::string strCall = *strToken == 'c' ? "call" : "no call";
        EXPECT_EQ(start("asked", "--status")->readLine(),
                  std::string("following\t") + strToken + "\t" + strCall + "\tGreen\tusable");
    }
}

// A start that waits for a hung copy, or whose activation is lost when the copy was merely busy.
TEST_P(SingleInstanceEnvironmentFixture, AHungHolderIsNotWaitedForLong) {
    const auto first = holding(start("t1"));
    first->signal(SIGSTOP);
    {
        const Watchdog watchdog(std::chrono::seconds(15));
        EXPECT_EQ(start("t2")->readLine(), "passed");
        EXPECT_EQ(start("", "--status")->readLine(), "silent");
    }
    first->signal(SIGCONT);
    EXPECT_EQ(first->readLine(), "activated t2");
}

// A crash after which the program can't be started again; a place that is kept, or half of it, until the
// process has ended.
TEST_P(SingleInstanceEnvironmentFixture, APlaceThatIsLeftIsTaken) {
    auto first = holding(start("t1"));
    first->signal(SIGKILL);
    first.reset();
    const auto second = holding(start("t2"));
    EXPECT_EQ(start("give-up")->readLine(), "passed");
    EXPECT_EQ(second->readLine(), "activated give-up");
    EXPECT_EQ(second->readLine(), "gave up");
    EXPECT_EQ(start("t3")->readLine(), "held");
}

// Two holders at once, or an activation that is lost.
TEST_P(SingleInstanceEnvironmentFixture, OfTwentyAtOnceOneHoldsAndNoActivationIsLost) {
    std::vector<std::unique_ptr<ChildProcess>> starts;
    for (int n = 0; n < 20; ++n)
        starts.push_back(start(std::to_string(n)));
    ChildProcess* pHolder = nullptr;
    std::multiset<std::string> expected;
    for (std::size_t n = 0; n < starts.size(); ++n) {
        if (const std::string strSaid = starts[n]->readLine(); strSaid == "held") {
            EXPECT_EQ(pHolder, nullptr) << "two hold it";
            pHolder = starts[n].get();
        } else {
            EXPECT_EQ(strSaid, "passed");
            expected.insert("activated " + std::to_string(n));
        }
    }
    ASSERT_NE(pHolder, nullptr);
    std::multiset<std::string> said;
    while (said.size() < expected.size())
        said.insert(pHolder->readLine());
    EXPECT_EQ(said, expected);
}

// Two copies on the same light, because a bus has died, or another one has come, since the first started.
TEST_F(SingleInstanceFixture, OnlyOneHoldsItWhateverBecomesOfTheBus) {
    startBus();
    const auto first = holding(start(kBoth, "t1"));
    endBus();
    expectActivation(*first, kBoth);
    EXPECT_EQ(start(kBoth, "", "--status")->readLine(), "following\tt2\tno call\tGreen\tusable");
    startBus();
    expectActivation(*first, kBoth);
}

// A start that ends beside one that is just ending, so that none is left.
TEST_F(SingleInstanceFixture, AnEndingHoldersPlaceIsTaken) {
    startBus();
    const TestApplication application{};
    for (const Environment& environment : {kBus, kBoth}) {
        const int nLock = ::open(lockFile().c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        ASSERT_EQ(::flock(nLock, LOCK_EX), 0);
        auto mock = std::make_unique<DbusMock>(BusKind::Session, "org.vellux.Vellux", "/org/vellux/Vellux",
                                               "org.freedesktop.Application");
        mock->addMethod(
            "Activate", "a{sv}", "",
            "raise dbus.exceptions.DBusException('', name='org.freedesktop.DBus.Error.UnknownObject')");
        const auto second = start(environment, "t2");
        ASSERT_TRUE(waitUntil([&] { return !mock->calls().isEmpty(); }));
        EXPECT_EQ(mock->calls().first(), "Activate {\"activation-token\": \"t2\"}");
        mock.reset();
        ::close(nLock);
        EXPECT_EQ(second->readLine(), "held");
    }
}

// A place that can't be taken, or can't be found, because half of it is broken.
TEST_F(SingleInstanceFixture, EitherHalfIsEnough) {
    startBus();
    ASSERT_EQ(::mkdir((directory() + "/org.vellux.Vellux.socket").c_str(), 0700),
              0); // nobody can listen there
    {
        const auto first = holding(start(kBoth, "t1"));
        expectActivation(*first, kBoth);
        EXPECT_EQ(start(kRuntime, "t3")->readLine(), "passed"); // unheard, but no second copy
    }
    std::filesystem::remove(lockFile());
    ASSERT_EQ(::mkdir(lockFile().c_str(), 0700), 0); // nor can anybody open this
    const auto first = holding(start(kBoth, "t1"));
    expectActivation(*first, kBoth);
}

// A start that waits for a bus that takes connections and says nothing.
TEST_F(SingleInstanceFixture, AHungBusIsNone) {
    const TestApplication application{};
    QLocalServer bus;
    ASSERT_TRUE(bus.listen(QString::fromStdString(directory() + "/hung")));
    m_strNoBus = "unix:path=" + bus.fullServerName().toStdString();
    const Watchdog watchdog(std::chrono::seconds(15));
    const auto first = holding(start(kRuntime, "t1"));
    expectActivation(*first, kRuntime);
}

// Another user's directory, in which that user could listen for us, or keep us from starting.
TEST_F(SingleInstanceFixture, ADirectoryThatOthersMayWriteToIsNotUsed) {
    const std::string strOpen = directory() + "/vellux-" + std::to_string(::getuid());
    std::filesystem::create_directory(strOpen);
    std::filesystem::permissions(strOpen, std::filesystem::perms::all);
    const auto first = holding(start(kTemporary, "t1")), second = holding(start(kTemporary, "t2"));
}

} // namespace
