// The device watch: the thread that lists and opens the devices, and follows arrivals and removals.
#pragma once

#include "adapters/hidraw/HidrawCatalogue.h"
#include "adapters/hidraw/HidrawListing.h"
#include "adapters/hidraw/HotplugSource.h"
#include "adapters/linux/WakeUp.h"
#include "threads/Shared.h"

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <thread>
#include <vector>

namespace vellux {

/// Started once, stopped once. Idle, it sleeps without a timer, unless the system could not list the devices:
/// then it asks again each second.
class HidrawWatch {
public:
    /// Called on the watch's thread after each listing with what changed; the list that devices() gives is up
    /// to date by then.
    using Report = std::function<void(const HidrawChanges&)>;

    /// `shuttingDown` is for the devices: see HidrawDevice.
    HidrawWatch(HidrawSystem system, std::vector<HidMatching> matching,
                std::shared_ptr<const std::atomic<bool>> shuttingDown, Report report);
    /// Stops the watch.
    ~HidrawWatch();
    HidrawWatch(const HidrawWatch&) = delete;
    HidrawWatch& operator=(const HidrawWatch&) = delete;

    /// Starts the thread and waits until the devices have been listed, opened and reported for the first
    /// time. 0, or the platform's code.
    HidResult start();
    /// Ends the thread and waits for it, which takes as long as the opening of a device under way. Nothing is
    /// reported any more after that, and devices() is empty. The thread that called start().
    void stop();

    /// Lists again and reports each present device as removed and arrived. Any thread; returns at once.
    void redeliver();
    /// The present devices. Any thread.
    HidDeviceList devices() const { return m_devices.get(); }

private:
    void run(std::promise<void> listed);
    void settle();
    void refresh(bool bRedeliver);
    HidrawOpened open(const HidrawEntry& entry);

    const HidrawSystem m_system;
    const std::vector<HidMatching> m_matching;
    const std::shared_ptr<const std::atomic<bool>> m_shuttingDown;
    const Report m_report;
    WakeUp m_wake;
    std::atomic<bool> m_bStop{false};
    std::atomic<bool> m_bRedeliver{false};
    Shared<HidDeviceList> m_devices;

    // The watch's thread only.
    std::unique_ptr<HotplugSource> m_hotplug;
    HidrawCatalogue m_catalogue;
    bool m_bListed = true; // the last listing succeeded

    std::thread m_thread;
};

} // namespace vellux
