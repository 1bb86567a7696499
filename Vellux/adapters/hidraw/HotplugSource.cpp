#include "adapters/hidraw/HotplugSource.h"

#include <array>
#include <cerrno>
#include <filesystem>
#include <poll.h>
#include <sys/inotify.h>
#include <thread>
#include <unistd.h>

namespace vellux {

namespace {
constexpr std::chrono::milliseconds kPauseAfterFailure{100}; // what fails at once must not spin
} // namespace

HotplugSource::HotplugSource() : m_udev(udev_new()) {
    if (m_udev == nullptr)
        return;
    m_monitor.reset(udev_monitor_new_from_netlink(m_udev.get(), "udev"));
    if (m_monitor != nullptr &&
        (udev_monitor_filter_add_match_subsystem_devtype(m_monitor.get(), "hidraw", nullptr) < 0 ||
         udev_monitor_enable_receiving(m_monitor.get()) < 0))
        m_monitor.reset();
}

HotplugSource::~HotplugSource() {
    forgetRefused();
}

void HotplugSource::watchRefused(const std::string& strPath) {
    // Its directory is watched, since a node that may not be read may not be watched either.
    const std::filesystem::path path(strPath);
    if (m_nRefused < 0)
        m_nRefused = ::inotify_init1(IN_CLOEXEC | IN_NONBLOCK);
    if (m_nRefused >= 0 && ::inotify_add_watch(m_nRefused, path.parent_path().c_str(), IN_ATTRIB) >= 0)
        m_refusedNames.insert(path.filename().string());
}

void HotplugSource::forgetRefused() {
    if (m_nRefused >= 0)
        ::close(m_nRefused);
    m_nRefused = -1;
    m_refusedNames.clear();
}

bool HotplugSource::drainMonitor() {
    bool bEvents = false;
    for (;;) {
        errno = 0;
        udev_device* pDevice = udev_monitor_receive_device(m_monitor.get());
        if (pDevice != nullptr) {
            udev_device_unref(pDevice);
            bEvents = true;
            continue;
        }
        if (errno == EINTR)
            continue;
        // Events were lost when the queue ran over.
        return bEvents || errno == ENOBUFS;
    }
}

bool HotplugSource::drainRefused() {
    alignas(inotify_event) std::array<char, 4096> buffer{};
    bool bEvents = false;
    ssize_t nRead = 0;
    while ((nRead = ::read(m_nRefused, buffer.data(), buffer.size())) > 0) {
        for (const char* p = buffer.data(); p < buffer.data() + nRead;) {
            const auto* const pEvent = reinterpret_cast<const inotify_event*>(p);
            const bool bLost = (pEvent->mask & IN_Q_OVERFLOW) != 0;
            bEvents = bEvents || bLost || (pEvent->len > 0 && m_refusedNames.contains(pEvent->name));
            p += sizeof(inotify_event) + pEvent->len;
        }
    }
    return bEvents;
}

bool HotplugSource::wait(const WakeUp& wake, std::optional<std::chrono::milliseconds> limit) {
    enum { kWake, kMonitor, kRefused, kCount };
    std::array<pollfd, kCount> sources{};
    sources[kWake] = {wake.descriptor(), POLLIN, 0};
    sources[kMonitor] = {m_monitor != nullptr ? udev_monitor_get_fd(m_monitor.get()) : -1, POLLIN, 0};
    sources[kRefused] = {m_nRefused, POLLIN, 0};
    const int nReady = ::poll(sources.data(), sources.size(), limit ? static_cast<int>(limit->count()) : -1);
    if (nReady < 0 && errno != EINTR)
        std::this_thread::sleep_for(kPauseAfterFailure);
    if (nReady <= 0)
        return false; // the limit passed, or a signal came
    bool bChanged = false;
    if (sources[kMonitor].revents != 0)
        bChanged = drainMonitor();
    if (sources[kRefused].revents != 0)
        bChanged = drainRefused() || bChanged;
    if ((sources[kMonitor].revents & (POLLHUP | POLLNVAL)) != 0)
        m_monitor.reset(); // else it would stay readable
    return bChanged;
}

} // namespace vellux
