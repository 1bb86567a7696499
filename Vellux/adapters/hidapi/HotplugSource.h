// What tells the device watch that listing again is worthwhile.
#pragma once

#include "adapters/hidapi/Udev.h"
#include "adapters/hidapi/WakeUp.h"

#include <chrono>
#include <optional>
#include <set>
#include <string>

namespace vellux {

/// udev's events of hidraw nodes, after its rules have run, and changes of the permissions of nodes that could
/// not be opened. The events only wake: what changed is read from the next listing, so that a lost event or a
/// burst of them does no harm. Without a udev daemon there are no events. Used by one thread.
class HotplugSource {
public:
    HotplugSource();
    ~HotplugSource();
    HotplugSource(const HotplugSource&) = delete;
    HotplugSource& operator=(const HotplugSource&) = delete;

    /// Tells when the permissions of a node change, until the next forgetRefused(): by a rule, by hand, or
    /// because another user's session came to the front.
    void watchRefused(const std::string& strPath);
    void forgetRefused();

    /// Waits for an event, or for `wake`, which is left as it is; without a limit, however long it takes.
    /// True when devices may have changed.
    bool wait(const WakeUp& wake, std::optional<std::chrono::milliseconds> limit = std::nullopt);

private:
    bool drainMonitor();
    bool drainRefused();

    UdevPtr<udev> m_udev;
    UdevPtr<udev_monitor> m_monitor; // null when there is none to be had
    int m_nRefused = -1;             // inotify descriptor, while a node is watched
    std::set<std::string> m_refusedNames;
};

} // namespace vellux
