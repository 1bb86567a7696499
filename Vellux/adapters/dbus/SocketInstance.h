// The single instance without a session bus.
#pragma once

#include "adapters/dbus/Activations.h"
#include "adapters/dbus/SingleInstance.h"

#include <QDeadlineTimer>

#include <memory>

namespace vellux {

/// Holds a locked file in the user's runtime directory and listens on a local socket beside it, or gives the
/// activation to who does. Null when another process holds it and has been asked, or has not answered in time. Where
/// no private directory is to be had, each start is on its own. Blocks until the deadline at most. Main thread.
std::unique_ptr<SingleInstance> claimLockFile(const LaunchTokens& tokens, const QDeadlineTimer& deadline);

} // namespace vellux
