// The two message buses.
#pragma once

#include <QDBusConnection>

#include <optional>

namespace vellux {

/// The session bus, connected. Absent when the environment names none (none is ever launched) or none
/// answers. The first call finds out, blocking for up to a second per address; later ones return the same,
/// unless the bus has gone since. Main thread, once the application object exists.
std::optional<QDBusConnection> sessionBus();

/// The same for the system bus.
std::optional<QDBusConnection> systemBus();

} // namespace vellux
