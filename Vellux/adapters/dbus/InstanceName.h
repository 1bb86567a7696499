// The single instance's name on a session bus.
#pragma once

#include "adapters/dbus/Activations.h"

#include <QDBusConnection>
#include <QDeadlineTimer>

#include <memory>
#include <optional>

namespace vellux {

class ApplicationObject;

/// The bus name, and org.freedesktop.Application under it. Given up with this object. Main thread.
class InstanceName {
public:
    /// Exports the interface; `activations`, which must outlive this, takes in what it is sent.
    InstanceName(const QDBusConnection& bus, Activations& activations);
    ~InstanceName();
    InstanceName(const InstanceName&) = delete;
    InstanceName& operator=(const InstanceName&) = delete;

    /// Asks for the name. Whether it is ours now; absent when the bus gives none, or does not answer by the
    /// deadline.
    std::optional<bool> request(const QDeadlineTimer& deadline);

private:
    QDBusConnection m_bus;
    const std::unique_ptr<ApplicationObject> m_object;
    bool m_bHeld = false;
};

/// Hands the activation to the name's owner. Whether that one has taken it; false, too, without an owner, or
/// when it does not answer by the deadline. Blocks until then at most. Main thread.
bool activateNameOwner(const QDBusConnection& bus, const LaunchTokens& tokens,
                       const QDeadlineTimer& deadline);

} // namespace vellux
