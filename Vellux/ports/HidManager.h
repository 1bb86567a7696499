// What device discovery and the report senders ask of the platform's HID service.
#pragma once

#include "threads/MainThread.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vellux {

/// Result of a HID operation: 0 is success; any other value is the platform's own code (errno on Linux).
using HidResult = std::uint32_t;

/// Identifies a kind of platform object.
using HidTypeID = unsigned long;

/// One HID device (one top-level entry of the platform's list). Opaque to the modules; the adapter derives
/// from it. A reference keeps the handle usable, also after the device is gone: sends then fail.
class HidDevice {
public:
    static constexpr HidTypeID kTypeID = 1;

    HidDevice() = default;
    virtual ~HidDevice() = default;
    HidDevice(const HidDevice&) = delete;
    HidDevice& operator=(const HidDevice&) = delete;

    /// kTypeID for every real device.
    virtual HidTypeID typeID() const { return kTypeID; }
};

using HidDeviceRef = std::shared_ptr<HidDevice>;
using HidDeviceList = std::vector<HidDeviceRef>;

/// One matching entry: property key to signed 32-bit number. A device matches when every key of the entry
/// has the given value ("VendorID", "ProductID", "PrimaryUsage").
using HidMatching = std::map<std::string, std::int32_t, std::less<>>;

/// The HID manager. Any thread may call deviceSetReport and isPermissionRefusal; all else is the main
/// thread's.
class HidManager {
public:
    virtual ~HidManager() = default;

    /// Makes the manager ready for use; false when the platform has none.
    [[nodiscard]] virtual bool create() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// A device that matches any of the entries belongs to the manager's set.
    virtual void setDeviceMatchingMultiple(const std::vector<HidMatching>& matching)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Notice of each arrival, including each device that is present when the manager is opened; delivered by
    /// the main thread's loop, never from within another operation. An empty function unregisters.
    virtual void registerDeviceMatchingCallback(std::function<void(const HidDeviceRef&)> callback)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Notice of each removal, delivered in the same way.
    virtual void registerDeviceRemovalCallback(std::function<void(const HidDeviceRef&)> callback)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Whether the notices are attached to the calling (main) thread's loop.
    virtual void setScheduled(bool bScheduled) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Starts following devices; 0 on success. May block while the devices are listed for the first time.
    [[nodiscard]] virtual HidResult open() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Stops following devices and forgets them. References that are still held stay valid.
    virtual void close() VELLUX_REQUIRES(mainThreadRole) = 0;

    /// For shutdown: from now on a device that hangs is given up soon, so that the end doesn't wait for it.
    /// Any thread.
    virtual void beginShutdown() = 0;

    /// The devices that match now, in no particular order; absent when the platform can't tell.
    [[nodiscard]] virtual std::optional<HidDeviceList> copyDevices() VELLUX_REQUIRES(mainThreadRole) = 0;
    /// A numeric property of a device; absent when it has none of that name, or it isn't a number.
    virtual std::optional<std::int64_t> deviceGetProperty(const HidDeviceRef& device, std::string_view strKey)
        VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Why a device of the set can't be used: 0 when it is open, else the platform's code for the refusal.
    virtual HidResult deviceOpenResult(const HidDeviceRef& device) VELLUX_REQUIRES(mainThreadRole) = 0;
    /// Whether a code means that the user may not open the device.
    virtual bool isPermissionRefusal(HidResult result) = 0;
    /// Sends one output report and waits until the device has accepted or refused it (5 s at most on Linux).
    /// Report ID 0 means that the payload goes out with no report-ID byte before it. Any thread; the adapter
    /// serialises the sends of one device.
    virtual HidResult deviceSetReport(const HidDeviceRef& device, std::uint8_t byReportID,
                                      std::span<const std::uint8_t> payload) = 0;
};

} // namespace vellux
