// What wakes the device watch to list again.
#pragma once

#include "adapters/linux/WakeUp.h"

#include <libudev.h>

#include <chrono>
#include <memory>
#include <optional>
#include <set>
#include <string>

namespace vellux {

/// Each of libudev's objects has a release function of its own.
struct UdevUnref {
    void operator()(udev* p) const { udev_unref(p); }
    void operator()(udev_device* p) const { udev_device_unref(p); }
    void operator()(udev_enumerate* p) const { udev_enumerate_unref(p); }
    void operator()(udev_monitor* p) const { udev_monitor_unref(p); }
};

/// Owns one reference. Objects of one context are used by one thread at a time.
template <typename T> using UdevPtr = std::unique_ptr<T, UdevUnref>;

/// udev's events of hidraw nodes, after its rules have run, and changes of the permissions of nodes that
/// could not be opened. The events only wake: what changed is read from the next listing, so that lost events
/// and bursts do no harm. Without a udev daemon there are no events. Used by one thread.
class HotplugSource {
public:
    HotplugSource();
    ~HotplugSource();
    HotplugSource(const HotplugSource&) = delete;
    HotplugSource& operator=(const HotplugSource&) = delete;

    /// Has wait() notice changes of the permissions of a node, until the next forgetRefused(): by a rule, by
    /// hand, or because another user's session came to the front.
    void watchRefused(const std::string& strPath);
    void forgetRefused();

    /// Waits for an event or for `wake`, which it doesn't clear; forever without a limit. True when devices
    /// may have changed.
    bool wait(const WakeUp& wake, std::optional<std::chrono::milliseconds> limit = std::nullopt);

private:
    bool drainMonitor();
    bool drainRefused();

    UdevPtr<udev> m_udev;
    UdevPtr<udev_monitor> m_monitor; // null when unavailable
    int m_nRefused = -1;             // inotify descriptor, while a node is watched
    std::set<std::string> m_refusedNames;
};

} // namespace vellux
