// The single instance's name on a session bus.
#pragma once

#include "adapters/dbus/Activations.h"
#include "model/ProgramStatus.h"

#include <QDBusConnection>
#include <QDeadlineTimer>

#include <memory>
#include <optional>

namespace vellux {

class ApplicationObject;
class StatusInterface;

/// The bus name, and under it org.freedesktop.Application and the status. Released with this object. Main
/// thread.
class InstanceName {
public:
    /// Exports the interfaces. Both outlive this: `activations` gets what they receive, `status` is what they
    /// tell.
    InstanceName(const QDBusConnection& bus, Activations& activations, const ProgramStatus& status);
    ~InstanceName();
    InstanceName(const InstanceName&) = delete;
    InstanceName& operator=(const InstanceName&) = delete;

    /// Requests the name. Returns whether we own it now; absent when the bus refuses, or doesn't answer by
    /// the deadline.
    [[nodiscard]] std::optional<bool> request(const QDeadlineTimer& deadline);

    /// Tells what is different now, if anything is.
    void tellStatusSince(const ProgramStatus& before);

private:
    QDBusConnection m_bus;
    const std::unique_ptr<ApplicationObject> m_object;
    StatusInterface& m_status; // the object's
    bool m_bHeld = false;
};

/// Sends the activation to the name's owner. Returns whether it was received; false without an owner, or
/// without an answer by the deadline. Blocks until then at most. Main thread.
bool activateNameOwner(const QDBusConnection& bus, const LaunchTokens& tokens,
                       const QDeadlineTimer& deadline);

/// The status that the name's owner tells; absent without an owner, or without an answer by the deadline.
/// Blocks until then at most. Main thread.
std::optional<ProgramStatus> askNameOwner(const QDBusConnection& bus, const QDeadlineTimer& deadline);

} // namespace vellux
