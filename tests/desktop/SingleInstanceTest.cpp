// Starts of the program beside each other, with a session bus or a runtime directory, or both.

#include "desktop/PrivateBus.h"

#include <QDBusPendingCall>
#include <QLocalServer>
#include <QLocalSocket>
#include <QXmlStreamReader>

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <sys/file.h>
#include <sys/resource.h>

namespace {

/// What a start finds.
struct Environment {
    bool bBus = false;
    enum { None, Runtime, Temporary } directory = None;
};

constexpr Environment kBus{true, Environment::None};
constexpr Environment kRuntime{false, Environment::Runtime};
constexpr Environment kTemporary{false, Environment::Temporary};
constexpr Environment kBoth{true, Environment::Runtime};

/// Starts of the program in one session.
class Session {
public:
    Session() {
        // A temporary directory with a file where our own directory would be.
        std::filesystem::create_directory(directory() + "/none");
        std::ofstream(directory() + "/none/vellux-" + std::to_string(::getuid()));
    }
    /// A start with the token that its launcher gave it, and with an option of InstanceHelper's.
    std::unique_ptr<ChildProcess> start(const Environment& environment, const std::string& strToken,
                                        const std::string& strOption = "") {
        const bool bRuntime = environment.directory == Environment::Runtime;
        const bool bTemporary = environment.directory == Environment::Temporary;
        return std::make_unique<ChildProcess>(
            std::vector<std::string>{"env", "-u", "DESKTOP_STARTUP_ID", "XDG_ACTIVATION_TOKEN=" + strToken,
                                     "TMPDIR=" + directory() + (bTemporary ? "" : "/none"),
                                     "XDG_RUNTIME_DIR=" + (bRuntime ? directory() : ""),
                                     "DBUS_SESSION_BUS_ADDRESS=" + (environment.bBus ? m_strBus : m_strNoBus),
                                     INSTANCE_HELPER, strOption});
    }
    std::string directory() const { return m_directory.path().toStdString(); }
    std::string lockFile() const { return directory() + "/org.vellux.Vellux.lock"; }
    void endBus() { m_bus.reset(); }
    /// A session bus, with an address of its own; before the starts that find one.
    void startBus() {
        m_bus = std::make_unique<PrivateBus>(BusKind::Session);
        m_strBus = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS").toStdString();
    }

    std::string m_strNoBus = "unix:path=/nowhere"; ///< what those without a bus find

private:
    const QTemporaryDir m_directory;
    std::unique_ptr<PrivateBus> m_bus;
    std::string m_strBus;
    const Watchdog m_watchdog{"single instance"};
};

/// A start, which is to take the place.
std::unique_ptr<ChildProcess> holding(std::unique_ptr<ChildProcess> start) {
    EXPECT_EQ(start->readLine(), "held");
    return start;
}

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
        const Watchdog watchdog("a start beside a hung one", std::chrono::seconds(15));
        EXPECT_EQ(start("t2")->readLine(), "passed");
        EXPECT_EQ(start("", "--status")->readLine(), "silent");
    }
    first->signal(SIGCONT);
    EXPECT_EQ(first->readLine(), "activated t2");
}

// A crash after which the program can't be started again.
TEST_P(SingleInstanceEnvironmentFixture, AKilledHoldersPlaceIsTaken) {
    auto first = holding(start("t1"));
    first->signal(SIGKILL);
    first.reset();
    const auto second = holding(start("t2"));
    EXPECT_EQ(start("t3")->readLine(), "passed");
    EXPECT_EQ(second->readLine(), "activated t3");
}

// A place that is kept, or half of it, until the process has ended.
TEST_P(SingleInstanceEnvironmentFixture, APlaceGivenUpIsTaken) {
    const auto first = holding(start("t1"));
    EXPECT_EQ(start("give-up")->readLine(), "passed");
    EXPECT_EQ(first->readLine(), "activated give-up");
    EXPECT_EQ(first->readLine(), "gave up");
    EXPECT_EQ(start("t3")->readLine(), "held");
}

// Two holders at once, or an activation that is lost.
TEST_P(SingleInstanceEnvironmentFixture, OfTwentyAtOnceOneHoldsAndNoActivationIsLost) {
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

class SingleInstanceFixture : public testing::Test, public Session {
protected:
    void expectActivation(ChildProcess& first, const Environment& environment) {
        const auto second = start(environment, "t2");
        EXPECT_EQ(second->readLine(), "passed");
        EXPECT_EQ(first.readLine(), "activated t2");
        EXPECT_EQ(second->wait(), 0);
    }
};

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

// Readers by the thousand, or some that never go, who take its descriptors, its time or its place.
TEST_F(SingleInstanceFixture, AThousandReadersAreAnsweredAndNoneInTheWay) {
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    startBus();
    int nArguments = 0;
    const QCoreApplication application(nArguments, nullptr);
    const auto first = holding(start(kBoth, "t1"));
    expectActivation(*first, kBoth);
    const QString strSocket = QString::fromStdString(directory() + "/org.vellux.Vellux.socket");
    const auto connectAll = [&](std::size_t nMany, const char* strMessage) {
        std::vector<std::unique_ptr<QLocalSocket>> sockets(nMany);
        for (auto& socket : sockets) {
            QLocalSocket* const pSocket = (socket = std::make_unique<QLocalSocket>()).get();
            QObject::connect(pSocket, &QLocalSocket::connected, pSocket,
                             [pSocket, strMessage] { pSocket->write(strMessage); });
            pSocket->connectToServer(strSocket);
        }
        return sockets;
    };

    const auto idle = connectAll(200, "half a line");
    const auto readers = connectAll(std::min<std::size_t>(1000, limit.rlim_cur - 400), "\x05status\n");
    for (const auto& reader : readers) // the slow ones may be dropped, and ask again
        QObject::connect(
            reader.get(), &QLocalSocket::disconnected, reader.get(),
            [&strSocket, pReader = reader.get()] {
                if (!pReader->canReadLine())
                    pReader->connectToServer(strSocket);
            },
            Qt::QueuedConnection);
    std::vector<QDBusPendingCall> answers;
    QDBusMessage question = QDBusMessage::createMethodCall("org.vellux.Vellux", "/org/vellux/Vellux",
                                                           "org.freedesktop.DBus.Properties", "GetAll");
    question << "org.vellux.Vellux.Status1";
    for (int n = 0; n < 1000; ++n)
        answers.push_back(QDBusConnection::connectToBus(QDBusConnection::SessionBus,
                                                        QString::number(n / 100)) // a bus limits each one
                              .asyncCall(question, 60'000));
    expectActivation(*first, kRuntime);
    expectActivation(*first, kBus);
    EXPECT_TRUE(waitUntil([&] {
        return std::all_of(readers.begin(), readers.end(),
                           [](auto& reader) { return reader->canReadLine(); });
    }));
    for (QDBusPendingCall& answer : answers) {
        answer.waitForFinished();
        EXPECT_EQ(answer.reply().type(), QDBusMessage::ReplyMessage)
            << answer.error().message().toStdString();
    }
    EXPECT_TRUE(waitUntil([&] { return idle.front()->state() == QLocalSocket::UnconnectedState; }));
    const std::string strOpen = "/proc/" + std::to_string(first->pid()) + "/fd";
    const auto open = std::filesystem::directory_iterator(strOpen);
    EXPECT_LT(std::distance(begin(open), end(open)), 64 + 40);
}

/// What the status's signals say.
class StatusSignals : public QObject {
    Q_OBJECT
public:
    StatusSignals() {
        QDBusConnection::sessionBus().connect("org.vellux.Vellux", "/org/vellux/Vellux",
                                              "org.freedesktop.DBus.Properties", "PropertiesChanged", this,
                                              SLOT(onChanged(QDBusMessage)));
    }
    QStringList m_changes;

public Q_SLOTS:
    void onChanged(const QDBusMessage& message) {
        const auto changed = qdbus_cast<QVariantMap>(message.arguments().value(1));
        for (const auto& [strName, value] : changed.toStdMap())
            m_changes.append(strName + "=" + value.toString());
        m_changes.append(message.arguments().value(0).toString());
    }
};

// Signals for nothing, or none for a change; an action that is taken for another; a description that is
// wrong.
TEST_F(SingleInstanceFixture, TheBusIsToldOfChangesAndCarriesActions) {
    startBus();
    int nArguments = 0;
    const QCoreApplication application(nArguments, nullptr);
    const auto first = holding(start(kBus, "t1"));
    const StatusSignals signals_;
    for (const char* strToken : {"t2", "t2", "call"}) {
        EXPECT_EQ(start(kBus, strToken)->readLine(), "passed");
        EXPECT_EQ(first->readLine(), std::string("activated ") + strToken);
    }
    const QString strInterface = "org.vellux.Vellux.Status1";
    const QStringList expected = {"Lamp=Green", "Light=usable", "Presence=t2",   "State=following",
                                  strInterface, "OnCall=true",  "Presence=call", strInterface};
    EXPECT_TRUE(waitUntil([&] { return signals_.m_changes.size() >= expected.size(); }));
    EXPECT_EQ(signals_.m_changes, expected);

    const auto call = [](const char* strOf, const char* strMethod, const QVariantList& arguments) {
        QDBusMessage message =
            QDBusMessage::createMethodCall("org.vellux.Vellux", "/org/vellux/Vellux", strOf, strMethod);
        message.setArguments(arguments);
        return QDBusConnection::sessionBus().call(message);
    };
    call("org.freedesktop.Application", "ActivateAction", {"reconnect", QVariantList(), QVariantMap()});
    EXPECT_EQ(first->readLine(), "activated reconnect");
    EXPECT_EQ(call("org.freedesktop.DBus.Properties", "Set",
                   {strInterface, "State", QVariant::fromValue(QDBusVariant("x"))})
                  .type(),
              QDBusMessage::ErrorMessage);

    const auto propertiesIn = [&](const QByteArray& strXml) {
        QStringList properties;
        QXmlStreamReader xml(strXml);
        for (bool bOurs = false; !xml.atEnd(); xml.readNext()) {
            if (xml.isStartElement() && xml.name() == QLatin1String("interface"))
                bOurs = xml.attributes().value("name") == strInterface;
            else if (xml.isStartElement() && bOurs && xml.name() == QLatin1String("property"))
                for (const char* strAttribute : {"name", "type", "access"})
                    properties += xml.attributes().value(strAttribute).toString();
        }
        return properties;
    };
    QFile file(STATUS_INTERFACE);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QStringList properties = propertiesIn(file.readAll());
    EXPECT_EQ(properties.size(), 3 * 5);
    EXPECT_EQ(
        propertiesIn(
            call("org.freedesktop.DBus.Introspectable", "Introspect", {}).arguments().value(0).toByteArray()),
        properties);
}

// A start that ends beside one that is just ending, so that none is left.
TEST_F(SingleInstanceFixture, AnEndingHoldersPlaceIsTaken) {
    startBus();
    int nArguments = 0;
    const QCoreApplication application(nArguments, nullptr);
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
    int nArguments = 0;
    const QCoreApplication application(nArguments, nullptr);
    QLocalServer bus;
    ASSERT_TRUE(bus.listen(QString::fromStdString(directory() + "/hung")));
    m_strNoBus = "unix:path=" + bus.fullServerName().toStdString();
    const Watchdog watchdog("a start beside a hung bus", std::chrono::seconds(15));
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

#include "SingleInstanceTest.moc"
