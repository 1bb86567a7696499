// The HID port on the kernel's hidraw nodes.
#pragma once

#include "adapters/hidraw/HidrawListing.h"
#include "ports/HidManager.h"
#include "threads/MainThread.h"
#include "threads/Shared.h"

#include <atomic>
#include <memory>
#include <vector>

namespace vellux {

class HidrawWatch;

/// A device that is there, as people name it.
struct HidrawLight {
    std::string strNode; ///< "/dev/hidraw3"
    std::uint16_t nVendorID = 0;
    std::uint16_t nProductID = 0;
    HidResult nRefusal = 0; ///< errno of its last opening; 0 when it could be opened
};

/// The process's one HID manager. Its device-watch thread, which runs from open() to close(), lists and opens
/// the devices; reports are written on the threads that send them. No lock is held while a notice is
/// delivered.
class HidrawManager : public HidManager {
public:
    /// `mainThread` must outlive the manager; notices are posted to it.
    explicit HidrawManager(MainThread& mainThread, HidrawSystem system = {});
    /// Closes the manager. Main thread.
    ~HidrawManager() override;
    HidrawManager(const HidrawManager&) = delete;
    HidrawManager& operator=(const HidrawManager&) = delete;

    /// Resets the manager: nothing matched, nothing registered, and closed.
    bool create() override;
    /// Takes effect at the next open().
    void setDeviceMatchingMultiple(const std::vector<HidMatching>& matching) override;
    void registerDeviceMatchingCallback(std::function<void(const HidDeviceRef&)> callback) override;
    void registerDeviceRemovalCallback(std::function<void(const HidDeviceRef&)> callback) override;
    void setScheduled(bool bScheduled) override;
    /// Waits until each device has been listed and opened. Without a udev daemon the devices that are there
    /// are found, but later changes are not noticed. Without a descriptor or a thread for the watch there are
    /// no lights; standard error says so.
    HidResult open() override;
    /// Waits for the device-watch thread, which takes as long as the opening of a device under way.
    void close() override;

    /// Absent while the manager is not open. A device keeps its place in the list for as long as it is there.
    std::optional<HidDeviceList> copyDevices() override;
    std::optional<std::int64_t> deviceGetProperty(const HidDeviceRef& device,
                                                  std::string_view strKey) override;
    /// errno of the refusal; ENODEV for a device that is not of this manager.
    HidResult deviceOpenResult(const HidDeviceRef& device) override;
    bool isPermissionRefusal(HidResult result) override;
    /// From now on a device whose last send timed out gets no further report: its sends answer ETIMEDOUT at
    /// once.
    void beginShutdown() override;
    /// errno of the failure: EACCES and the like for a device that may not be opened, ENODEV for one that is
    /// gone or not of this manager, EIO when only part of the report was accepted. ETIMEDOUT for a device
    /// that hangs: after 5 s, or at once during the 5 s that follow the second time-out in a row.
    HidResult deviceSetReport(const HidDeviceRef& device, std::uint8_t byReportID,
                              std::span<const std::uint8_t> payload) override;

    /// The devices of copyDevices(), in that order; none while the manager is not open. Main thread; asks no
    /// device.
    std::vector<HidrawLight> lights();

    /// Delivers a removal and an arrival for every device that is there: lights lose their state while the
    /// system sleeps. Does nothing while the manager is not open. Any thread; returns at once.
    void redeliver();

private:
    struct Notices;

    MainThread& m_mainThread;
    const std::shared_ptr<Notices> m_notices VELLUX_GUARDED_BY(mainThreadRole);
    const HidrawSystem m_system;
    const std::shared_ptr<std::atomic<bool>> m_shuttingDown = std::make_shared<std::atomic<bool>>(false);
    std::vector<HidMatching> m_matching VELLUX_GUARDED_BY(mainThreadRole);
    Shared<std::shared_ptr<HidrawWatch>> m_watch; // null while not open; set by the main thread
};

} // namespace vellux
