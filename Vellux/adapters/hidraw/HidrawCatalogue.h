// What the listed devices are, which of them belong to the manager's set, and what changed from one listing
// to the next. Plain logic: no device library, no thread, no lock.
#pragma once

#include "ports/HidManager.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vellux {

/// One device as it is listed.
struct HidrawEntry {
    /// The device node. A later device may get the same one.
    std::string strPath;
    /// Tells this device from any other that had or will have the same path.
    std::string strInstance;
    std::uint16_t nVendorID = 0;
    std::uint16_t nProductID = 0;
    /// Usage of the first top-level collection of the report descriptor.
    std::uint16_t nPrimaryUsage = 0;

    bool operator==(const HidrawEntry&) const = default;
};

/// The numeric property of a device, as HidManager::deviceGetProperty names them.
std::optional<std::int64_t> hidrawProperty(const HidrawEntry& entry, std::string_view strKey);

/// The usage of the first top-level collection of a report descriptor, without its page (Device Class
/// Definition for HID 1.11, 6.2.2); 0, which no device has, when the descriptor has no collection or is
/// broken before it.
std::uint16_t primaryUsage(std::span<const std::uint8_t> descriptor);

/// The devices that match any of the entries, in listing order.
std::vector<HidrawEntry> matchingDevices(std::vector<HidrawEntry> present,
                                         const std::vector<HidMatching>& matching);

/// Result of HidrawCatalogue::Open.
struct HidrawOpened {
    HidDeviceRef device;
    /// False when the platform refused: the device is still listed, and its sends fail.
    bool bOpened = false;
};

/// Devices that have left and devices that have come, each in the order of their notices. Every removal is
/// delivered before the first arrival.
struct HidrawChanges {
    HidDeviceList removed;
    HidDeviceList arrived;
};

/// The matched devices of the last listing. A device keeps its place while it is present, and new ones are
/// appended, so that a second light doesn't displace the first.
class HidrawCatalogue {
public:
    /// Opens a device; the reference is never null.
    using Open = std::function<HidrawOpened(const HidrawEntry&)>;

    /// Adopts a new listing. New devices are opened, and opening is retried for those that were refused
    /// before: one that opens now is reported as removed and arrived, with a working reference. With
    /// `bRedeliver` this is reported for all devices that stay.
    HidrawChanges update(const std::vector<HidrawEntry>& present, const Open& open, bool bRedeliver);

    /// The references of the present devices.
    HidDeviceList devices() const;

private:
    struct Slot {
        HidrawEntry entry;
        HidrawOpened opened;
    };
    std::vector<Slot> m_slots;
};

} // namespace vellux
