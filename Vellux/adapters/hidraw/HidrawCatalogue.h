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

/// What HidrawCatalogue::Open gives back.
struct HidrawOpened {
    HidDeviceRef device;
    /// False when the platform refused: the device is listed all the same and its sends fail.
    bool bOpened = false;
};

/// Devices that have left and devices that have come, each in the order of their notices. Every removal is
/// delivered before the first arrival.
struct HidrawChanges {
    HidDeviceList removed;
    HidDeviceList arrived;
};

/// The matched devices of the last listing. A device keeps its place for as long as it is there, and new ones
/// are added behind, so that a second light does not push the first one from the head of the list.
class HidrawCatalogue {
public:
    /// Opens a device; the reference is never null.
    using Open = std::function<HidrawOpened(const HidrawEntry&)>;

    /// Takes over a new listing. New devices are opened, and those are tried again that could not be opened
    /// before: one that opens now leaves and comes back with a reference that works. With `bRedeliver`, the
    /// devices that stay leave and come back as well.
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
