// The desktop's services, played by mocks on buses of the test's own.

#include "adapters/dbus/DesktopProxy.h"
#include "adapters/dbus/HiddenStartNotice.h"
#include "adapters/dbus/NetworkNotice.h"
#include "adapters/dbus/Notification.h"
#include "adapters/dbus/ProcessActivity.h"
#include "adapters/dbus/ResumeNotice.h"
#include "desktop/PrivateBus.h"

#include <gtest/gtest.h>

#include <QDBusArgument>

using namespace vellux;

namespace {

constexpr const char* kLogind = "org.freedesktop.login1";

class ServicesFixture : public testing::Test {
protected:
    const PrivateBus m_session{BusKind::Session}, m_system{BusKind::System};
    const TestApplication m_application{};
};

class Logind : public DbusMock {
public:
    Logind()
        : DbusMock(BusKind::System, kLogind, "/org/freedesktop/login1", "org.freedesktop.login1.Manager") {
        mock("AddTemplate", {"logind", QVariantMap()});
    }
    /// The reasons of the inhibitors that are held.
    QStringList reasons() {
        const QVariantList answer = call("org.freedesktop.login1.Manager", "ListInhibitors").arguments();
        const auto inhibitors = answer.value(0).value<QDBusArgument>();
        QStringList reasons;
        for (inhibitors.beginArray(); !inhibitors.atEnd();) {
            QString strWhat, strWho, strWhy, strMode;
            inhibitors.beginStructure();
            inhibitors >> strWhat >> strWho >> strWhy >> strMode;
            EXPECT_EQ(strWhat + ' ' + strWho + ' ' + strMode, "idle Vellux block");
            reasons.append(strWhy);
            inhibitors.endStructure();
        }
        inhibitors.endArray();
        return reasons;
    }
};

class Portal : public DbusMock {
public:
    explicit Portal(const QString& strInterface)
        : DbusMock(BusKind::Session, "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                   "org.freedesktop.portal." + strInterface) {}
    void answerInhibit(const char* strCode) { addMethod("Inhibit", "sua{sv}", "o", strCode); }
    void answerLookup(const std::string& strProxies = "'http://proxy:8'") {
        addMethod("Lookup", "s", "as",
                  ("ret = ['direct://'] if 'inside' in args[0] else [" + strProxies + "]").c_str());
    }
};

// A system that falls asleep while the program follows, or never again.
TEST_F(ServicesFixture, ThePortalInhibitsForAsLongAsAnActivityLives) {
    Portal portal("Inhibit");
    portal.answerInhibit(
        "self.AddObject('/request/' + args[2]['handle_token'], 'org.freedesktop.portal.Request', {},"
        " [('Close', '', '', '')]); ret = dbus.ObjectPath('/request/' + args[2]['handle_token'])");
    Logind logind;
    std::optional<ProcessActivity> activity = beginProcessActivity("a reason");
    ASSERT_TRUE(activity);
    ASSERT_TRUE(waitUntil([&] { return portal.calls().size() == 1; }));
    EXPECT_EQ(portal.calls().last(), R"(Inhibit "" 4 {"handle_token": "vellux1", "reason": "a reason"})");
    QCoreApplication::processEvents();
    activity.reset();
    EXPECT_TRUE(waitUntil([&] { return portal.calls().size() == 2; }));
    EXPECT_EQ(portal.calls().last(), "Close");

    static_cast<void>(beginProcessActivity("released before the answer"));
    EXPECT_TRUE(waitUntil([&] { return portal.calls().size() == 4; }));
    EXPECT_EQ(portal.calls().last(), "Close");
    EXPECT_EQ(logind.reasons(), QStringList());
}

// A desktop without a portal, or with one that can't; and an inhibitor that nobody gives back.
TEST_F(ServicesFixture, LogindInhibitsWhereThePortalDoesNot) {
    Portal portal("Inhibit");
    portal.answerInhibit(
        "raise dbus.exceptions.DBusException('no', name='org.freedesktop.DBus.Error.Failed')");
    Logind logind;
    std::optional<ProcessActivity> first = beginProcessActivity("first");
    static_cast<void>(beginProcessActivity("released before the answer"));
    EXPECT_TRUE(waitUntil([&] { return logind.reasons() == QStringList("first"); }));
    std::optional<ProcessActivity> second = beginProcessActivity("second");
    EXPECT_TRUE(waitUntil([&] { return logind.reasons() == QStringList({"first", "second"}); }));
    std::optional<ProcessActivity> third = beginProcessActivity("released before logind's answer");
    EXPECT_TRUE(waitUntil([&] { return portal.calls().size() == 8; })); // four, each with its error
    third.reset();
    first.reset();
    EXPECT_TRUE(waitUntil([&] { return logind.reasons() == QStringList("second"); }));
    second.reset();
    EXPECT_TRUE(waitUntil([&] { return logind.reasons().isEmpty(); }));
}

// Lights that stay dark after a resume, or are announced again on the way to sleep.
TEST_F(ServicesFixture, EachWakeUpIsNoticedAndNoFallingAsleep) {
    Logind logind;
    int nResumed = 0;
    auto notice = std::make_unique<ResumeNotice>([&] { ++nResumed; });
    const auto prepareForSleep = [&](bool bAboutToSleep) {
        logind.emitSignal("PrepareForSleep", "b", {bAboutToSleep});
        QCoreApplication::processEvents();
        return nResumed;
    };
    EXPECT_EQ(prepareForSleep(true), 0);
    EXPECT_EQ(prepareForSleep(false), 1);
    EXPECT_EQ(prepareForSleep(false), 2);
    notice.reset();
    EXPECT_EQ(prepareForSleep(false), 2);
}

class Proxies : public ServicesFixture {
protected:
    Proxies() {
        for (const char* strVariable : {"http_proxy", "https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"})
            qunsetenv(strVariable);
    }
    /// Whether the portal says so, sooner or later: a busy machine's takes more than its second.
    static bool says(const DesktopProxies& proxies, const char* strUrl, std::optional<std::string> strProxy) {
        return waitUntil([&] { return proxies.proxyOf(strUrl, true) == strProxy; });
    }
};

// A proxy of the desktop's that is ignored, or used where there is to be none, or against the environment's.
TEST_F(Proxies, TheDesktopsAreUsedUnlessTheEnvironmentNamesSome) {
    const DesktopProxies proxies = desktopProxies();
    EXPECT_EQ(proxies.proxyOf("https://outside/", true), std::nullopt); // there is no portal yet
    Portal portal("ProxyResolver");
    portal.answerLookup();
    EXPECT_TRUE(says(proxies, "https://outside/", "http://proxy:8"));
    EXPECT_TRUE(says(proxies, "https://inside:1/token", ""));
    EXPECT_EQ(portal.calls().last(), "Lookup \"https://inside:1/\""); // not the whole URL
    qputenv("https_proxy", "http://another:8");
    EXPECT_FALSE(desktopProxies().proxyOf);
}

// A portal that is asked with every poll; or whose settings of yesterday hold in another network.
TEST_F(Proxies, AnAnswerHoldsUntilTheNextQuestion) {
    Portal portal("ProxyResolver");
    portal.answerLookup();
    const DesktopProxies proxies = desktopProxies();
    proxies.proxyOf("https://outside/a", false); // the first about this host
    EXPECT_TRUE(waitUntil([&] { return portal.calls().contains("Lookup \"https://outside/\""); }));
    EXPECT_TRUE(says(proxies, "https://outside/b", "http://proxy:8"));
    portal.answerLookup("'socks://proxy:9', 'direct://'");
    const qsizetype nCalls = portal.calls().size();
    EXPECT_EQ(proxies.proxyOf("https://outside/c", false), "http://proxy:8");
    EXPECT_EQ(portal.calls().size(), nCalls);
    EXPECT_TRUE(waitUntil([&] {
        proxies.askAgain("https://outside/d");
        return proxies.proxyOf("https://outside/e", false) == "socks://proxy:9";
    }));
    portal.answerLookup("");
    EXPECT_TRUE(says(proxies, "https://outside/", std::nullopt));
}

// A portal that hung once and is never asked again; or one whose hanging holds up every poll of a network
// that is gone.
TEST_F(Proxies, APortalThatHangsIsAskedAgainAndNotWaitedForAgain) {
    auto portal = std::make_unique<Portal>("ProxyResolver");
    portal->answerLookup();
    const DesktopProxies proxies = desktopProxies();
    portal->signal(SIGSTOP);
    EXPECT_EQ(proxies.proxyOf("https://outside/", true), std::nullopt);
    portal->signal(SIGCONT);
    EXPECT_TRUE(says(proxies, "https://outside/", "http://proxy:8"));
    portal->signal(SIGSTOP);
    {
        const Watchdog watchdog(std::chrono::seconds(60));
        for (int n = 0; n < 1000; ++n) {
            proxies.askAgain("https://outside/");
            EXPECT_EQ(proxies.proxyOf("https://outside/", false), "http://proxy:8");
        }
    }
    EXPECT_EQ(proxies.proxyOf("https://outside/", true), "http://proxy:8"); // the last that is known
    portal.reset();
    EXPECT_EQ(proxies.proxyOf("https://outside/", true), "http://proxy:8");
}

class NetworkFixture : public ServicesFixture {
protected:
    static std::unique_ptr<DbusMock> manager(quint32 nState) {
        const char* const kManager = "org.freedesktop.NetworkManager";
        auto mock = std::make_unique<DbusMock>(BusKind::System, kManager, "/org/freedesktop/NetworkManager",
                                               kManager);
        mock->addProperty("State", nState);
        return mock;
    }
    int m_nBack = 0;
};

// A network that comes back unnoticed, or one that was there all the time and is taken for news.
TEST_F(NetworkFixture, EachReturnOfTheNetworkIsNoticed) {
    auto mock = manager(70);
    auto notice = std::make_unique<NetworkNotice>([this] { ++m_nBack; });
    ASSERT_TRUE(waitUntil([&] { return mock->calls().join(' ').contains("Get"); }));
    const auto change = [&](quint32 nState) {
        mock->emitSignal("StateChanged", "u", {nState});
        QCoreApplication::processEvents();
        return m_nBack;
    };
    const struct {
        quint32 nState;
        int nBack;
    } rows[] = {{70, 0}, {60, 0}, {70, 1}, {20, 1}, {40, 1}, {50, 2}, {50, 2},
                {60, 3}, {70, 4}, {10, 4}, {70, 5}, {70, 5}, {0, 5},  {60, 6}};
    for (const auto& row : rows)
        EXPECT_EQ(change(row.nState), row.nBack) << row.nState;
    mock.reset();
    mock = manager(20); // started anew
    EXPECT_EQ(change(70), 7);
    notice.reset();
    change(20);
    EXPECT_EQ(change(70), 7);
}

// A button that does nothing, or something for another notification; one that stays when all is well again.
TEST_F(ServicesFixture, ANotificationsButtonsReachTheProgram) {
    Notifications mock;
    QStringList pressed;
    std::unique_ptr<Notification> one, other;
    const QList<NotificationAction> actions = {{"reconnect", "Reconnect"}, {"show", "Show"}};
    one = showNotification("One", "", actions, [&](const QString& strKey, const QString& strToken) {
        pressed += strKey + " " + strToken;
        if (strKey == "show")
            one.reset();
    });
    ASSERT_TRUE(mock.gets(R"("One" "" ["reconnect", "Reconnect", "show", "Show"])"));
    other =
        showNotification("Other", "", actions, [&](const QString&, const QString&) { pressed += "other"; });
    ASSERT_TRUE(mock.gets("Other"));
    QCoreApplication::processEvents();
    const auto press = [&](quint32 nId, const char* strKey, const char* strToken) {
        if (strToken != nullptr)
            mock.emitSignal("ActivationToken", "us", {nId, strToken});
        mock.emitSignal("ActionInvoked", "us", {nId, strKey});
        QCoreApplication::processEvents();
    };
    press(3, "show", "of somebody else");
    press(1, "reconnect", "token");
    press(1, "reconnect", nullptr);
    press(1, "show", "t2");
    EXPECT_EQ(pressed, QStringList({"reconnect token", "reconnect ", "show t2"}));
    EXPECT_TRUE(mock.gets("CloseNotification 1"));
    press(1, "reconnect", nullptr);
    EXPECT_EQ(pressed.size(), 3);
    mock.emitSignal("NotificationClosed", "uu", {2U, 2U}); // by the user
    QCoreApplication::processEvents();
    other.reset();

    static_cast<void>(showNotification("nothing to see", "", actions, {})); // withdrawn before it is shown
    other = showNotification("Third", "", {}, {});
    ASSERT_TRUE(mock.gets("Third"));
    other.reset(); // withdrawn before the answer
    EXPECT_TRUE(mock.gets("CloseNotification 3"));
    EXPECT_FALSE(mock.calls().join(' ').contains("nothing to see"));
}

// Buttons where there can be none, or no notification at all there; one without the program's name and icon,
// or whose text is taken for markup.
TEST_F(ServicesFixture, WithoutActionsANotificationIsShownPlain) {
    const QList<NotificationAction> actions = {{"show", "Show"}};
    static_cast<void>(showNotification("nobody", "shows it", actions, {}));
    for (const char* strCapabilities :
         {"ret = ['body']",
          "raise dbus.exceptions.DBusException('no', name='org.freedesktop.DBus.Error.Failed')"}) {
        Notifications mock(strCapabilities);
        const auto shown = showNotification("Summary", "a < b", actions, {});
        EXPECT_TRUE(mock.gets(R"(Notify "Vellux" 0 "org.vellux.Vellux" "Summary" "a &lt; b" [] )"
                              R"({"desktop-entry": "org.vellux.Vellux"} -1)"))
            << mock.calls().join('\n').toStdString();
        showNotification("Told", "without actions");
        EXPECT_TRUE(mock.gets(R"("Told" "without actions" [])"));
    }
}

// A user who can't find the program, is told so at each log-in, or although there is a tray.
TEST_F(ServicesFixture, AHiddenStartWithoutATrayIsToldOnce) {
    bool bTold = false;
    int nAsked = 0, nTold = 0;
    const HiddenStartNotice::Dependencies dependencies{[&] { return ++nAsked, bTold; },
                                                       [&] { ++nTold, bTold = true; }};
    const HiddenStartNotice first(dependencies, std::chrono::milliseconds(1));
    EXPECT_TRUE(waitUntil([&] { return nTold == 1; }));
    const HiddenStartNotice second(dependencies, std::chrono::milliseconds(1));
    EXPECT_TRUE(waitUntil([&] { return nAsked == 2; }));
    EXPECT_EQ(nTold, 1);

    const char* const kWatcher = "org.kde.StatusNotifierWatcher";
    DbusMock watcher(BusKind::Session, kWatcher, "/StatusNotifierWatcher", kWatcher);
    watcher.addProperty("IsStatusNotifierHostRegistered", true);
    bTold = false;
    const HiddenStartNotice third(dependencies, std::chrono::seconds(1));
    bool bLater = false; // in the same loop
    QTimer::singleShot(std::chrono::milliseconds(1500), [&] { bLater = true; });
    EXPECT_TRUE(waitUntil([&] { return bLater; }));
    EXPECT_EQ(nTold, 1);
    EXPECT_EQ(nAsked, 2);
}

} // namespace
