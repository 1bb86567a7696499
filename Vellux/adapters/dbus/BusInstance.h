// The single instance on a session bus.
#pragma once

#include "adapters/dbus/Activations.h"
#include "adapters/dbus/SingleInstance.h"

#include <QDBusConnection>
#include <QDeadlineTimer>

#include <memory>
#include <optional>

namespace vellux {

/// Owns the bus name, or gives the activation to who does. Null when another process owns it and has been asked, or
/// has not answered in time; absent when the bus gives no names to this process. Blocks until the deadline at most.
/// Main thread.
std::optional<std::unique_ptr<SingleInstance>>
claimBusName(const QDBusConnection& bus, const LaunchTokens& tokens, const QDeadlineTimer& deadline);

} // namespace vellux
