#include "adapters/dbus/SingleInstance.h"

#include "adapters/dbus/BusInstance.h"
#include "adapters/dbus/Buses.h"
#include "adapters/dbus/SocketInstance.h"

#include <QDeadlineTimer>

namespace vellux {

std::unique_ptr<SingleInstance> SingleInstance::claim() {
    constexpr qint64 kLongestClaimMs = 2000;
    const QDeadlineTimer deadline(kLongestClaimMs);
    const LaunchTokens tokens{qEnvironmentVariable("XDG_ACTIVATION_TOKEN"),
                              qEnvironmentVariable("DESKTOP_STARTUP_ID")};
    if (const std::optional<QDBusConnection> bus = sessionBus()) {
        if (std::optional<std::unique_ptr<SingleInstance>> instance = claimBusName(*bus, tokens, deadline))
            return std::move(*instance);
    }
    return claimLockFile(tokens, deadline);
}

} // namespace vellux
