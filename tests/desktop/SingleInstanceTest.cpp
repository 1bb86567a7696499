// Starts of the program beside each other, with a session bus and without.

#include "desktop/PrivateBus.h"

#include <QLocalServer>

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <ostream>
#include <sys/stat.h>

namespace {

enum class Place { Bus, RuntimeDirectory, TemporaryDirectory };

void PrintTo(Place place, std::ostream* pOut) {
    *pOut << (place == Place::Bus                ? "Bus"
              : place == Place::RuntimeDirectory ? "RuntimeDirectory"
                                                 : "TemporaryDirectory");
}

/// Starts of the program in one session.
class Session {
public:
    explicit Session(Place place) : m_place(place) {
        if (place == Place::Bus)
            m_bus = std::make_unique<PrivateBus>(BusKind::Session);
    }

    /// A start with the token that its launcher gave it.
    std::unique_ptr<ChildProcess> start(const std::string& strToken, const std::string& strBusAddress = "") {
        std::vector<std::string> command{"env", "-u", "DESKTOP_STARTUP_ID",
                                         "XDG_ACTIVATION_TOKEN=" + strToken, "TMPDIR=" + directory()};
        command.push_back("XDG_RUNTIME_DIR=" + (m_place == Place::RuntimeDirectory ? directory() : ""));
        if (m_bus == nullptr)
            command.push_back("DBUS_SESSION_BUS_ADDRESS=" + strBusAddress);
        command.push_back(INSTANCE_HELPER);
        return std::make_unique<ChildProcess>(command);
    }
    std::string directory() const { return m_directory.path().toStdString(); }

private:
    const Place m_place;
    std::unique_ptr<PrivateBus> m_bus;
    const QTemporaryDir m_directory;
    const Watchdog m_watchdog{"single instance"};
};

class SingleInstance : public testing::TestWithParam<Place>, public Session {
protected:
    SingleInstance() : Session(GetParam()) {}
};

INSTANTIATE_TEST_SUITE_P(In, SingleInstance,
                         testing::Values(Place::Bus, Place::RuntimeDirectory, Place::TemporaryDirectory),
                         testing::PrintToStringParamName());

// Two copies that fight over the light, or a second start that does nothing at all.
TEST_P(SingleInstance, ASecondStartActivatesTheFirstAndEnds) {
    const auto first = start("t1");
    ASSERT_EQ(first->readLine(), "held");
    for (const char* strToken : {"t2", "", "t3"}) {
        const auto second = start(strToken);
        EXPECT_EQ(second->readLine(), "passed");
        EXPECT_EQ(first->readLine(), *strToken != 0 ? std::string("activated ") + strToken : "activated");
        EXPECT_EQ(second->wait(), 0);
    }
}

// A start that waits for a hung copy, or whose activation is lost when the copy was merely busy.
TEST_P(SingleInstance, AHungHolderIsNotWaitedForLong) {
    const auto first = start("t1");
    ASSERT_EQ(first->readLine(), "held");
    first->signal(SIGSTOP);
    {
        const Watchdog watchdog("a start beside a hung one", std::chrono::seconds(15));
        EXPECT_EQ(start("t2")->readLine(), "passed");
    }
    first->signal(SIGCONT);
    EXPECT_EQ(first->readLine(), "activated t2");
}

// A crash after which the program can't be started again.
TEST_P(SingleInstance, AKilledHoldersPlaceIsTaken) {
    auto first = start("t1");
    ASSERT_EQ(first->readLine(), "held");
    first->signal(SIGKILL);
    first.reset();
    const auto second = start("t2");
    EXPECT_EQ(second->readLine(), "held");
    EXPECT_EQ(start("t3")->readLine(), "passed");
    EXPECT_EQ(second->readLine(), "activated t3");
}

// A place that is kept, or half of it, until the process has ended.
TEST_P(SingleInstance, APlaceGivenUpIsTaken) {
    const auto first = start("t1");
    ASSERT_EQ(first->readLine(), "held");
    EXPECT_EQ(start("give-up")->readLine(), "passed");
    EXPECT_EQ(first->readLine(), "activated give-up");
    EXPECT_EQ(first->readLine(), "gave up");
    EXPECT_EQ(start("t3")->readLine(), "held");
}

// A moment in which two hold it, or one in which an activation reaches nobody.
TEST_P(SingleInstance, OfTwentyAtOnceOneHoldsAndNoActivationIsLost) {
    std::vector<std::unique_ptr<ChildProcess>> starts;
    for (int n = 0; n < 20; ++n)
        starts.push_back(start(std::to_string(n)));
    ChildProcess* pHolder = nullptr;
    std::vector<std::string> expected;
    for (std::size_t n = 0; n < starts.size(); ++n) {
        if (const std::string strSaid = starts[n]->readLine(); strSaid == "held") {
            EXPECT_EQ(pHolder, nullptr) << "two hold it";
            pHolder = starts[n].get();
        } else {
            EXPECT_EQ(strSaid, "passed");
            expected.push_back("activated " + std::to_string(n));
        }
    }
    ASSERT_NE(pHolder, nullptr);
    std::vector<std::string> said;
    while (said.size() < expected.size())
        said.push_back(pHolder->readLine());
    std::sort(said.begin(), said.end());
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(said, expected);
}

// A start that ends beside one that is just ending, so that none is left.
TEST(SingleInstanceOnBus, AnEndingOwnersNameIsTaken) {
    Session session(Place::Bus);
    int nArguments = 0;
    const QCoreApplication application(nArguments, nullptr);
    auto mock = std::make_unique<DbusMock>(BusKind::Session, "org.vellux.Vellux", "/org/vellux/Vellux",
                                           "org.freedesktop.Application");
    mock->addMethod(
        "Activate", "a{sv}", "",
        "raise dbus.exceptions.DBusException('', name='org.freedesktop.DBus.Error.UnknownObject')");
    const auto second = session.start("t2");
    ASSERT_TRUE(waitUntil([&] { return !mock->calls().isEmpty(); }));
    EXPECT_EQ(mock->calls().first(), "Activate {\"activation-token\": \"t2\"}");
    mock.reset();
    EXPECT_EQ(second->readLine(), "held");
}

// A start that waits for a bus that takes connections and says nothing.
TEST(SingleInstanceWithoutBus, AHungBusIsNone) {
    Session session(Place::RuntimeDirectory);
    int nArguments = 0;
    const QCoreApplication application(nArguments, nullptr);
    QLocalServer bus;
    ASSERT_TRUE(bus.listen(QString::fromStdString(session.directory() + "/hung")));
    const Watchdog watchdog("a start beside a hung bus", std::chrono::seconds(15));
    const auto first = session.start("t1", "unix:path=" + bus.fullServerName().toStdString());
    EXPECT_EQ(first->readLine(), "held");
    EXPECT_EQ(session.start("t2")->readLine(), "passed");
}

// Another user's directory, in which that user could listen for us, or keep us from starting.
TEST(SingleInstanceWithoutBus, ADirectoryThatOthersMayWriteToIsNotUsed) {
    Session session(Place::TemporaryDirectory);
    const std::string strOpen = session.directory() + "/vellux-" + std::to_string(::getuid());
    ASSERT_EQ(::mkdir(strOpen.c_str(), 0700), 0);
    ASSERT_EQ(::chmod(strOpen.c_str(), 0777), 0);
    const auto first = session.start("t1"), second = session.start("t2");
    EXPECT_EQ(first->readLine(), "held");
    EXPECT_EQ(second->readLine(), "held");
}

} // namespace
