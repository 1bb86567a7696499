// The single instance's name on a session bus.
#pragma once

#include "adapters/dbus/Activations.h"

#include <QDBusConnection>
#include <QDeadlineTimer>

#include <memory>
#include <optional>

namespace vellux {

class ApplicationObject;

/// The bus name, and org.freedesktop.Application under it. Released with this object. Main thread.
class InstanceName {
public:
    /// Exports the interface; `activations`, which must outlive this, gets what it receives.
    InstanceName(const QDBusConnection& bus, Activations& activations);
    ~InstanceName();
    InstanceName(const InstanceName&) = delete;
    InstanceName& operator=(const InstanceName&) = delete;

    /// Requests the name. Returns whether we own it now; absent when the bus refuses, or doesn't answer by
    /// the deadline.
    [[nodiscard]] std::optional<bool> request(const QDeadlineTimer& deadline);

private:
    QDBusConnection m_bus;
    const std::unique_ptr<ApplicationObject> m_object;
    bool m_bHeld = false;
};

/// Sends the activation to the name's owner. Returns whether it was received; false without an owner, or
/// without an answer by the deadline. Blocks until then at most. Main thread.
bool activateNameOwner(const QDBusConnection& bus, const LaunchTokens& tokens,
                       const QDeadlineTimer& deadline);

} // namespace vellux
