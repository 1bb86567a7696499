// What the light driver and the presence client report to.
#pragma once

#include "threads/MainThread.h"

#include <optional>
#include <string>

namespace vellux {

/// Implemented by the controller, so that the modules below it don't depend on it.
class Listener {
public:
    virtual ~Listener() = default;

    /// A light has arrived. Main thread.
    virtual void devicePlugged() = 0;
    /// A light has left. Main thread.
    virtual void deviceUnplugged() = 0;
    /// The event channel has brought a presence, as the server spells it. The client calls it on the main
    /// thread.
    virtual void updateVelluxStatusWithPresence(const std::optional<std::string>& strToken) = 0;
};

} // namespace vellux
