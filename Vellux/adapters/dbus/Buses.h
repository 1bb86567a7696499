// The two message buses.
#pragma once

#include <QDBusConnection>

#include <optional>

namespace vellux {

/// The session bus, connected. Absent when the environment names none (none is ever launched) or none
/// answers. The first call finds out, blocking a second at most per address; later ones only repeat it, but
/// for a bus that has gone since. After the application object has been made; main thread.
std::optional<QDBusConnection> sessionBus();

/// The same for the system bus.
std::optional<QDBusConnection> systemBus();

} // namespace vellux
