#include "kernel/UdevEvents.h"

#include <libudev.h>

#include <cerrno>
#include <mutex>
#include <set>
#include <string>
#include <sys/eventfd.h>
#include <unistd.h>

namespace {

// The process's one monitor, and the events it has not read.
struct Monitor {
    std::mutex mutex;
    std::string strGroup;
    std::set<std::string> subsystems;
    bool bReceiving = false;
    const int nEvents = ::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK | EFD_SEMAPHORE);
} monitor;

} // namespace

bool udev_events::reaches(const char* strGroup, const char* strSubsystem) {
    const std::lock_guard lock(monitor.mutex);
    return monitor.bReceiving && monitor.strGroup == strGroup && monitor.subsystems.contains(strSubsystem);
}

void udev_events::announce() {
    if (reaches("udev", "hidraw"))
        ::eventfd_write(monitor.nEvents, 1);
}

// NOLINTBEGIN(bugprone-reserved-identifier): the linker's names
extern "C" {

udev_monitor* __real_udev_monitor_new_from_netlink(udev* pUdev, const char* strGroup);
udev_monitor* __wrap_udev_monitor_new_from_netlink(udev* pUdev, const char* strGroup) {
    const std::lock_guard lock(monitor.mutex);
    monitor.strGroup = strGroup;
    monitor.subsystems.clear();
    return __real_udev_monitor_new_from_netlink(pUdev, strGroup);
}

int __real_udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* p, const char* strSubsystem,
                                                           const char* strType);
int __wrap_udev_monitor_filter_add_match_subsystem_devtype(udev_monitor* p, const char* strSubsystem,
                                                           const char* strType) {
    const std::lock_guard lock(monitor.mutex);
    if (strType == nullptr) // hidraw nodes have none
        monitor.subsystems.insert(strSubsystem);
    return __real_udev_monitor_filter_add_match_subsystem_devtype(p, strSubsystem, strType);
}

int __real_udev_monitor_enable_receiving(udev_monitor* p);
int __wrap_udev_monitor_enable_receiving(udev_monitor* p) {
    const std::lock_guard lock(monitor.mutex);
    monitor.bReceiving = true;
    return __real_udev_monitor_enable_receiving(p);
}

int __wrap_udev_monitor_get_fd(udev_monitor*) {
    return monitor.nEvents;
}

udev_device* __wrap_udev_monitor_receive_device(udev_monitor* p) {
    eventfd_t nEvent = 0;
    if (::eventfd_read(monitor.nEvents, &nEvent) != 0) // EAGAIN
        return nullptr;
    udev_device* pAny =
        udev_device_new_from_syspath(udev_monitor_get_udev(p), "/sys/devices/virtual/mem/null");
    if (pAny == nullptr)
        errno = ENOBUFS; // an event as well
    return pAny;
}

udev_monitor* __real_udev_monitor_unref(udev_monitor* p);
udev_monitor* __wrap_udev_monitor_unref(udev_monitor* p) {
    const std::lock_guard lock(monitor.mutex);
    monitor.bReceiving = false;
    return __real_udev_monitor_unref(p);
}

} // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
