// The program itself, as a process of its own: how it starts by itself, and every way to end it.

#include "adapters/ApplicationId.h"
#include "desktop/ChildProcess.h"
#include "desktop/PrivateBus.h"
#include "desktop/ProgramHome.h"
#include "server/PresenceServer.h"

#include <QLocalServer>
#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <fstream>

namespace {

using namespace vellux::simulator;
namespace fs = std::filesystem;

constexpr std::chrono::seconds kHang{60}; // what the server makes a client wait; requests give up after 30 s

/// Counts the presence queries.
class QueryCount : public PresenceServerObserver {
public:
    void requestArrived(std::string_view, std::string_view strTarget) override {
        m_nTokens += strTarget.ends_with("/oauthtoken") ? 1 : 0;
        m_nQueries += strTarget.ends_with("/presence") ? 1 : 0;
    }
    void presenceChanges(std::string_view) override {}
    void pollsChanged() override {}

    std::atomic<int> m_nTokens{0};
    std::atomic<int> m_nQueries{0};
};

/// The windows that are shown on the test's display.
int windowsOnScreen() {
    xcb_connection_t* const pDisplay = xcb_connect(nullptr, nullptr);
    int nShown = 0;
    if (xcb_connection_has_error(pDisplay) == 0) {
        const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(pDisplay)).data->root;
        auto* const pTree = xcb_query_tree_reply(pDisplay, xcb_query_tree(pDisplay, root), nullptr);
        for (int n = 0; n < xcb_query_tree_children_length(pTree); ++n) {
            const auto cookie = xcb_get_window_attributes(pDisplay, xcb_query_tree_children(pTree)[n]);
            if (auto* const pWindow = xcb_get_window_attributes_reply(pDisplay, cookie, nullptr)) {
                nShown += pWindow->map_state == XCB_MAP_STATE_VIEWABLE ? 1 : 0;
                std::free(pWindow);
            }
        }
        std::free(pTree);
    }
    xcb_disconnect(pDisplay);
    return nShown;
}

class ProcessFixture : public testing::Test {
protected:
    ChildProcess& start(std::vector<std::string> arguments = {}) {
        arguments.insert(arguments.begin(), VELLUX_PROGRAM);
        m_program = std::make_unique<ChildProcess>(arguments);
        return *m_program;
    }
    /// Starts it where the system trusts the server's authority: with a bundle of our own in a mount
    /// namespace.
    ChildProcess& startTrusting() {
        const std::string strBundle = m_home.directory() + "/authority.pem";
        vellux::writeFile(strBundle, m_authority->pem(), vellux::FileAccess::Default);
        const std::string strCommand =
            "mount --bind " + strBundle + " /etc/ssl/certs/ca-certificates.crt && exec " VELLUX_PROGRAM;
        std::vector<std::string> command = {"unshare", "--mount", "sh", "-c", strCommand};
        if (::geteuid() != 0) // then by a user namespace, which there are none of in a changed root
            command.insert(command.begin() + 1, "--map-root-user");
        m_program = std::make_unique<ChildProcess>(command);
        return *m_program;
    }
    /// By one of the masks in the process's status.
    static bool handles(const ChildProcess& program, int nSignal, const std::string& strMask) {
        std::ifstream status("/proc/" + std::to_string(program.pid()) + "/status");
        for (std::string strLine; std::getline(status, strLine);) {
            if (strLine.starts_with(strMask))
                return (std::stoull(strLine.substr(strMask.size() + 1), nullptr, 16) >> (nSignal - 1) & 1U) !=
                       0;
        }
        return false;
    }
    bool isStarted() const { return m_home.content("configv31.bin") != "absent"; }

    /// The exit status; absent if it goes on for so long that a cancelled request can't be the reason.
    static std::optional<int> statusAtEnd(ChildProcess& program) {
        return program.statusWithin(std::chrono::seconds(20));
    }
    static std::optional<int> statusAfter(ChildProcess& program, int nSignal) {
        program.signal(nSignal);
        return statusAtEnd(program);
    }

    const ProgramHome m_home{[] {
        std::string strPattern = (fs::temp_directory_path() / "vellux-program-XXXXXX").string();
        return std::string(::mkdtemp(strPattern.data()));
    }()};
    QueryCount m_queries;
    const std::optional<CertificateAuthority> m_authority = CertificateAuthority::create();
    const std::unique_ptr<PresenceServer> m_server =
        PresenceServer::start(*m_authority, {kUserName, kPassword}, &m_queries);
    std::unique_ptr<ChildProcess> m_program;
};

class EndingSignalFixture : public ProcessFixture, public testing::WithParamInterface<int> {};
INSTANTIATE_TEST_SUITE_P(Program, EndingSignalFixture, testing::Values(SIGTERM, SIGINT, SIGHUP));

// A sign-in at start that does not come, and a signal that kills instead of ending: settings lost, light left
// on.
TEST_P(EndingSignalFixture, EndsInOrderWhileFollowing) {
    m_home.writeSignIn(m_server->host());
    m_home.writeWindowState("1;1;0;1;2;0;3;1");
    ChildProcess& program = startTrusting();
    ASSERT_TRUE(waitUntil([&] { return m_server->isPolling(); }));
    fs::remove(m_home.data() + "/uistate.txt");
    EXPECT_EQ(statusAfter(program, GetParam()), 0);
    EXPECT_EQ(m_home.content("uistate.txt"), "1;1;0;1;2;0;3;1");
}

// An end that waits for a sign-in that hangs, on the monitor's thread.
TEST_F(ProcessFixture, EndsWhileConnecting) {
    m_home.writeSignIn(m_server->host());
    m_server->interfere(Route::Token, {kHang, {}, CutOff::Never, 1});
    ChildProcess& program = startTrusting();
    ASSERT_TRUE(waitUntil([&] { return m_queries.m_nTokens == 1; }));
    EXPECT_EQ(statusAfter(program, SIGTERM), 0);
}

// An end that waits until a query that hangs lets the main thread go.
TEST_F(ProcessFixture, EndsWhileTheMainThreadWaitsForAnAnswer) {
    m_home.writeSignIn(m_server->host());
    ChildProcess& program = startTrusting();
    ASSERT_TRUE(waitUntil([&] { return m_server->isPolling() && m_queries.m_nQueries >= 2; }));
    m_server->interfere(Route::Presence, {kHang, {}, CutOff::Never, 9});
    const int nBefore = m_queries.m_nQueries;
    m_server->setPresence("Busy");
    ASSERT_TRUE(waitUntil([&] { return m_queries.m_nQueries > nBefore; }));
    EXPECT_EQ(statusAfter(program, SIGTERM), 0);
}

// An end that waits for somebody to press OK, with a monitor thread behind the alert.
TEST_F(ProcessFixture, EndsWithAnAlertOpen) {
    m_home.writeSignIn(m_server->host(), "another-password");
    const XServer display;
    ChildProcess& program = startTrusting();
    ASSERT_TRUE(waitUntil([] { return windowsOnScreen() == 2; }));
    EXPECT_EQ(statusAfter(program, SIGTERM), 0);
}

// The second signal of a session's end, or of a terminal that closes, that kills in the middle of the orderly
// end.
TEST_F(ProcessFixture, SignalsThatComeTogetherAreOneRequest) {
    const struct {
        int nFirst, nSecond;
    } rows[] = {{SIGTERM, SIGHUP}, {SIGHUP, SIGHUP}, {SIGHUP, SIGTERM}, {SIGINT, SIGTERM}, {SIGINT, SIGINT}};
    for (const auto& row : rows) {
        fs::remove_all(m_home.data());
        ChildProcess& program = start();
        ASSERT_TRUE(waitUntil([&] { return isStarted(); }));
        program.signal(row.nFirst);
        program.signal(row.nSecond);
        EXPECT_EQ(statusAtEnd(program), 0) << row.nFirst << " " << row.nSecond;
        EXPECT_EQ(m_home.content("uistate.txt"), "1;0;0;0;0;1;0;2") << row.nFirst << " " << row.nSecond;
    }
}

// A loss that is not notified, a press on its button that does nothing, or a notification that stays.
TEST_F(ProcessFixture, ALossIsNotifiedAndMendedByAPress) {
    const TestApplication application;
    const PrivateBus session(BusKind::Session);
    Notifications desktop;

    m_home.writeSignIn(m_server->host());
    ChildProcess& program = startTrusting();
    ASSERT_TRUE(waitUntil([&] { return m_server->isPolling(); }));
    m_server->emitBatch({401, "<html>", "text/html"});
    EXPECT_TRUE(desktop.gets("Following has ended: the server has signed you out"));
    EXPECT_TRUE(desktop.gets(R"("reconnect", "Reconnect", "show", "Show")"));
    // It may not know its number yet.
    EXPECT_TRUE(waitUntil([&] {
        desktop.emitSignal("ActionInvoked", "us", {1U, "reconnect"});
        return m_server->isPolling();
    }));
    EXPECT_TRUE(waitUntil([&] { return desktop.calls().contains("CloseNotification 1"); }));
    EXPECT_EQ(statusAfter(program, SIGTERM), 0);
}

// A signal that kills while the program starts, or is lost there; a state written before it was read.
TEST_F(ProcessFixture, EndsInOrderAtAnyMomentOfItsStart) {
    for (int n = 0; n < 25; ++n) {
        m_home.writeWindowState("1;1;0;1;2;0;3;1");
        ChildProcess& program = start();
        while (!handles(program, SIGTERM, "SigCgt"))
            std::this_thread::yield();
        std::this_thread::sleep_for(std::chrono::milliseconds(3 * n));
        EXPECT_EQ(statusAfter(program, SIGTERM), 0) << n;
        EXPECT_EQ(m_home.content("uistate.txt"), "1;1;0;1;2;0;3;1") << n;
    }
}

// A start that can't be ended while it waits for a display, or for a bus, that takes connections and never
// answers.
TEST_F(ProcessFixture, EndsWhileTheDesktopDoesNotAnswerItsStart) {
    const TestApplication application;
    const QString strDisplay = QString::number(1000 + ::getpid() % 50000);
    fs::create_directories("/tmp/.X11-unix");
    QLocalServer::removeServer("/tmp/.X11-unix/X" + strDisplay); // of a server that was killed
    QLocalServer bus, display;                                   // nobody answers here
    ASSERT_TRUE(bus.listen(QString::fromStdString(m_home.directory()) + "/silent-bus"));
    ASSERT_TRUE(display.listen("/tmp/.X11-unix/X" + strDisplay));
    qputenv("DISPLAY", ":" + strDisplay.toUtf8());
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + bus.fullServerName().toUtf8());
    for (QLocalServer* const pSilent : {&bus, &display}) {
        qputenv("QT_QPA_PLATFORM", pSilent == &display ? "xcb" : "offscreen");
        ChildProcess& program = start();
        ASSERT_TRUE(pSilent->waitForNewConnection(60'000));
        EXPECT_EQ(statusAfter(program, SIGTERM), 0) << pSilent->fullServerName().toStdString();
    }
}

// A hang-up that ends what nohup started; signals blocked, and with them in every program that is started
// from here.
TEST_F(ProcessFixture, LeavesAnIgnoredSignalIgnoredAndNoneBlocked) {
    m_program = std::make_unique<ChildProcess>(
        std::vector<std::string>{"sh", "-c", "trap '' HUP; exec " VELLUX_PROGRAM});
    ASSERT_TRUE(waitUntil([&] { return isStarted(); }));
    EXPECT_TRUE(handles(*m_program, SIGHUP, "SigIgn"));
    for (const int nSignal : {SIGTERM, SIGINT, SIGHUP})
        EXPECT_FALSE(handles(*m_program, nSignal, "SigBlk")) << nSignal;
    EXPECT_EQ(statusAfter(*m_program, SIGTERM), 0);
}

// A toolkit that aborts or hangs instead of an error message; a program that refuses to start with enough.
TEST_F(ProcessFixture, SaysWhatItLacksToStart) {
    const std::string strCopy = m_home.directory() + "/vellux"; // where any user may start it
    fs::copy_file(VELLUX_PROGRAM, strCopy);
    fs::permissions(m_home.directory(), fs::perms(0755));
    ::setenv("ASAN_OPTIONS", "detect_leaks=0", 1); // its check at the end needs a process more
    const std::string strAsAUser =
        ::geteuid() == 0 ? "exec setpriv --reuid=61234 --regid=61234 --clear-groups " : "exec ";
    const std::string strRun = "exec " + strCopy;
    const std::string strTakeForty = "for n in {10..49}; do eval \"exec $n</dev/null\"; done; ";
    const struct {
        std::string strCommand, strLacking;
    } rows[] = {
        {"ulimit -n 6; " + strRun, "file descriptors"},
        {"ulimit -n 31; " + strRun, "file descriptors"},
        {"ulimit -n 70; " + strTakeForty + strRun, "file descriptors"},
        {"ulimit -n 80; " + strTakeForty + strRun, ""},
        {strAsAUser + "prlimit --nproc=2 " + strCopy, "threads"},
        {strAsAUser + "prlimit --nproc=8 " + strCopy, "threads"},
    };
    for (const auto& row : rows) {
        m_program = std::make_unique<ChildProcess>(std::vector<std::string>{"bash", "-c", row.strCommand});
        if (row.strLacking.empty()) {
            ASSERT_TRUE(waitUntil([&] { return isStarted(); })) << row.strCommand;
            EXPECT_EQ(statusAfter(*m_program, SIGTERM), 0) << row.strCommand;
            continue;
        }
        const std::string strLine = m_program->readLine();
        EXPECT_TRUE(strLine.starts_with("vellux: fewer than ")) << row.strCommand << ": " << strLine;
        EXPECT_NE(strLine.find(row.strLacking), std::string::npos) << row.strCommand << ": " << strLine;
        EXPECT_EQ(statusAtEnd(*m_program), 1) << row.strCommand;
    }
}

// A display that goes away takes the process with it; the light must not stay on, nor the settings be lost.
TEST_F(ProcessFixture, EndsInOrderWhenTheDisplayGoesAway) {
    XServer display;
    ChildProcess& program = start();
    ASSERT_TRUE(waitUntil([&] { return isStarted(); }));
    fs::remove(m_home.data() + "/uistate.txt");
    display.kill();
    EXPECT_EQ(statusAtEnd(program), 1);
    EXPECT_EQ(m_home.content("uistate.txt"), "1;0;0;0;0;1;0;2");
}

// An option that opens the window, asks for a display or for a running copy; one of the toolkit's that is
// lost.
TEST_F(ProcessFixture, AnswersOnTheCommandLine) {
    std::unique_ptr<ChildProcess> running;
    const struct {
        std::vector<std::string> arguments;
        const char* strLine;
        int nStatus;
        bool bRunning;
    } rows[] = {
        {{"--help"}, "Usage: vellux [OPTION]...", 0, false},
        {{"foo", "--version"}, "vellux " VELLUX_VERSION, 0, false},
        {{"--status"}, "vellux: not running", 3, false},
        {{"--status"}, "not connected\t-\tno call\tOff\tnone", 0, true},
        {{"--version", "--status"}, "vellux " VELLUX_VERSION, 0, true},
        {{"--hidden"}, "", 0, true},
    };
    for (const auto& row : rows) {
        if (row.bRunning && running == nullptr) {
            ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
            running = std::make_unique<ChildProcess>(
                std::vector<std::string>{VELLUX_PROGRAM, "foo", "-style", "fusion", "--", "--help"});
            for (const char* strLeft : {"foo", "--", "--help"})
                EXPECT_EQ(running->readLine(),
                          std::string("vellux: \"") + strLeft + "\" means nothing here; see vellux --help");
            ASSERT_TRUE(waitUntil([&] { return isStarted(); }));
        }
        ::setenv("QT_QPA_PLATFORM", row.arguments.front() == "--hidden" ? "offscreen" : "xcb", 1);
        ChildProcess& program = start(row.arguments);
        EXPECT_EQ(program.readLine(), row.strLine);
        EXPECT_EQ(statusAtEnd(program), row.nStatus) << row.arguments.front();
    }
    EXPECT_EQ(statusAfter(*running, SIGTERM), 0);
}

// A window at each log-in; none where nothing is set up, or when it is started again.
TEST_F(ProcessFixture, AHiddenStartShowsTheWindowOnlyWhereItIsNeeded) {
    const XServer display;
    ChildProcess& first = start({"--hidden"});
    EXPECT_TRUE(waitUntil([] { return windowsOnScreen() == 1; })); // there are no settings
    EXPECT_EQ(statusAfter(first, SIGTERM), 0);
    m_home.writeSignIn(m_server->host());
    m_home.writeWindowState("0;1;0;1;2;0;3;1"); // set by hand: no alert either
    const auto hidden = std::make_unique<ChildProcess>(std::vector<std::string>{VELLUX_PROGRAM, "--hidden"});
    ASSERT_TRUE(waitUntil([&] {
        ChildProcess& question = start({"--status"});
        return question.readLine() == "manual\t-\tno call\tPurple\tnone";
    }));
    EXPECT_EQ(statusAtEnd(start({"--hidden"})), 0);
    EXPECT_EQ(windowsOnScreen(), 0);
    EXPECT_EQ(statusAtEnd(start()), 0);
    EXPECT_TRUE(waitUntil([] { return windowsOnScreen() == 1; }));
    EXPECT_EQ(statusAfter(*hidden, SIGTERM), 0);
}

// A crash instead of an error message.
TEST_F(ProcessFixture, SaysThatThereIsNoDisplay) {
    ::unsetenv("QT_QPA_PLATFORM");
    ChildProcess& program = start();
    EXPECT_NE(program.readLine().find("vellux: there is no display"), std::string::npos);
    EXPECT_EQ(program.readLine(), "");
    EXPECT_EQ(statusAtEnd(program), 1);
}

} // namespace
