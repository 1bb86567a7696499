// A message bus of the guest's.
#pragma once

#include "KernelFixture.h"

#include <QDBusConnection>

/// Run by the ordinary user, and open to root. It starts what the system has services for. One at a time.
class UserBus {
public:
    /// The environment variable by which programs find it.
    explicit UserBus(const char* strVariable) {
        EXPECT_EQ(root(R"(
            mkdir -p /run/user-bus && cd /run/user-bus && chown nobody:nogroup . && cat >conf <<END
<busconfig><type>session</type><listen>unix:path=/run/user-bus/socket</listen><auth>EXTERNAL</auth>
<servicedir>/usr/share/dbus-1/services</servicedir>
<policy context='default'><allow user='*'/><allow own='*'/><allow send_destination='*'/>
<allow receive_sender='*'/></policy></busconfig>
END
            setpriv --reuid=nobody --regid=nogroup --clear-groups env HOME=/run/user-bus \
                XDG_RUNTIME_DIR=/run/user-bus GSETTINGS_BACKEND=memory \
                dbus-daemon --fork --print-pid --config-file=conf >pid)"),
                  0);
        ::setenv(strVariable, kAddress, 1);
        m_connection = QDBusConnection::connectToBus(kAddress, "user");
        EXPECT_TRUE(m_connection.isConnected());
    }
    ~UserBus() {
        QDBusConnection::disconnectFromBus("user");
        root("kill $(cat /run/user-bus/pid); rm -rf /run/user-bus");
    }
    UserBus(const UserBus&) = delete;
    UserBus& operator=(const UserBus&) = delete;

    QDBusConnection& connection() { return m_connection; }

private:
    static constexpr const char* kAddress = "unix:path=/run/user-bus/socket";
    QDBusConnection m_connection{"none"};
};
