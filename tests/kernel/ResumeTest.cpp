// Lights lose their state while the system sleeps.

#include "UserBus.h"

#include <QDBusMessage>

using namespace vellux::simulator;

namespace {

void prepareForSleep(const QDBusConnection& bus, bool bAboutToSleep) {
    QDBusMessage signal = QDBusMessage::createSignal("/org/freedesktop/login1",
                                                     "org.freedesktop.login1.Manager", "PrepareForSleep");
    signal.setArguments({bAboutToSleep});
    EXPECT_TRUE(bus.send(signal));
}

class Resume : public KernelTest {};

// A light that stays dark after a resume, or one that is switched on again on the way to sleep.
TEST_F(Resume, TheLightIsToldAgain) {
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
