// Ownership of libudev's objects, each of which has a release function of its own.
#pragma once

#include <libudev.h>

#include <memory>

namespace vellux {

struct UdevUnref {
    void operator()(udev* p) const { udev_unref(p); }
    void operator()(udev_device* p) const { udev_device_unref(p); }
    void operator()(udev_enumerate* p) const { udev_enumerate_unref(p); }
    void operator()(udev_monitor* p) const { udev_monitor_unref(p); }
};

/// Owns one reference. Objects of one context are used by one thread at a time.
template <typename T> using UdevPtr = std::unique_ptr<T, UdevUnref>;

} // namespace vellux
