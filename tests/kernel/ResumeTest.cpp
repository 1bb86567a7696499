// Lights lose their state while the system sleeps.

#include "World.h"

#include <QDBusConnection>
#include <QDBusMessage>

namespace {

constexpr const char* kBus = "unix:path=/run/vellux-bus";

/// A system bus of the guest's, and on it what the login service says about sleep.
class LoginService {
public:
    LoginService() {
        EXPECT_EQ(
            root("cat >/run/vellux-bus.conf <<END\n"
                 "<busconfig><listen>unix:path=/run/vellux-bus</listen><auth>EXTERNAL</auth>"
                 "<policy context='default'><allow user='*'/><allow own='*'/><allow send_destination='*'/>"
                 "<allow receive_sender='*'/></policy></busconfig>\n"
                 "END\n"
                 "dbus-daemon --fork --print-pid --config-file=/run/vellux-bus.conf >/run/vellux-bus.pid"),
            0);
        m_bus = QDBusConnection::connectToBus(kBus, "login");
        EXPECT_TRUE(m_bus.registerService("org.freedesktop.login1"));
    }
    ~LoginService() {
        QDBusConnection::disconnectFromBus("login");
        root("kill $(cat /run/vellux-bus.pid)");
    }
    LoginService(const LoginService&) = delete;
    LoginService& operator=(const LoginService&) = delete;

    void prepareForSleep(bool bAboutToSleep) {
        QDBusMessage signal = QDBusMessage::createSignal("/org/freedesktop/login1",
                                                         "org.freedesktop.login1.Manager", "PrepareForSleep");
        signal.setArguments({bAboutToSleep});
        EXPECT_TRUE(m_bus.send(signal));
    }

private:
    QDBusConnection m_bus{"none"};
};

class Resume : public KernelTest {};

// A light that stays dark after a resume, or one that is switched on again on the way to sleep.
TEST_F(Resume, TheLightIsToldAgain) {
    LoginService login;
    m_environment["DBUS_SYSTEM_BUS_ADDRESS"] = kBus;
    startFollowing();
    UhidLight light(kLevelsLight);
    m_server->setPresence("Busy");
    ASSERT_TRUE(comesToShow(light, reportOf(Family::Levels, kRed)));
    light.forget();
    login.prepareForSleep(true);
    waitInVain();
    EXPECT_TRUE(light.attempts().empty());
    for (int nNotice = 0; nNotice < 2; ++nNotice) { // it may come twice
        light.forget();
        login.prepareForSleep(false);
        ASSERT_TRUE(comesToShow(light, reportOf(Family::Levels, kRed)));
    }
    endProgram();
}

} // namespace
