// Discovery: which devices are lights, which light is of which type, and the notices of arrival and removal.

#include "VelluxControl/VelluxControl.h"

#include "ports/Platform.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

using vellux::HidDevice;
using vellux::HidDeviceList;
using vellux::HidDeviceRef;
using vellux::HidManager;
using vellux::HidMatching;

std::array<std::atomic<std::uint8_t>, vellux::kDeviceTableSize> asDeviceInfo{};
HidManager* gIOHIDManagerRef = nullptr;
vellux::Shared<std::shared_ptr<const HidDeviceList>> gDeviceCFArrayRef;
std::atomic<std::int32_t> gnNumberOfVelluxDevices{0};
std::atomic<bool> bDevicePlugged{false};

namespace {

struct MatchingRow {
    std::int32_t nVendorID, nProductID;
    std::int32_t nUsageWrittenFirst; // without effect: the next column overwrites it
    std::int32_t nPrimaryUsage;
};

constexpr MatchingRow kMatchingRows[] = {
    {0x1130, 0x0001, 1, 3},    {0x1130, 0x0002, 1, 3},    {0x1130, 0x1E00, 0xA0FF, 1},
    {0x0E53, 0x2516, 0xFF, 1}, {0x0E53, 0x2517, 0xFF, 1}, {0x0E53, 0x2519, 0xFF, 1},
    {0x2C0D, 0x0003, 0xFF, 1}, {0x2C0D, 0x0006, 0xFF, 1},
};

struct TypeRow {
    std::int64_t nVendorID, nProductID;
    std::uint8_t byType;
};

// Products 1 and 2 of vendor 0x2C0D are never matched, but their types are known.
// (kept-on-purpose:unmatched-types)
constexpr TypeRow kTypeRows[] = {
    {0x1130, 0x0001, 1}, {0x1130, 0x0002, 1}, {0x1130, 0x1E00, 2}, {0x0E53, 0x2516, 3}, {0x2C0D, 0x0001, 3},
    {0x0E53, 0x2517, 4}, {0x2C0D, 0x0002, 4}, {0x0E53, 0x2519, 7}, {0x2C0D, 0x0003, 7}, {0x2C0D, 0x0006, 6},
};

std::vector<HidMatching> matchingEntries() {
    std::vector<HidMatching> entries;
    for (const MatchingRow& row : kMatchingRows) {
        HidMatching entry;
        entry["VendorID"] = row.nVendorID;
        entry["ProductID"] = row.nProductID;
        entry["PrimaryUsage"] = row.nUsageWrittenFirst; // kept-on-purpose:usage-twice
        entry["PrimaryUsage"] = row.nPrimaryUsage;
        entries.push_back(std::move(entry));
    }
    return entries;
}

// A light that matches no row keeps the entry of its index. (kept-on-purpose:type-remembered)
void classify(const HidDeviceRef& device, std::atomic<std::uint8_t>& byType)
    VELLUX_REQUIRES(vellux::mainThreadRole) {
    std::int64_t nProductID = 0;
    std::int64_t nVendorID = 0;
    IOHIDDevice_GetLongProperty(device, "ProductID", nProductID);
    IOHIDDevice_GetLongProperty(device, "VendorID", nVendorID);
    const auto* const pRow =
        std::find_if(std::begin(kTypeRows), std::end(kTypeRows), [&](const TypeRow& row) {
            return row.nVendorID == nVendorID && row.nProductID == nProductID;
        });
    if (pRow != std::end(kTypeRows))
        byType = pRow->byType;
}

} // namespace

vellux::LightFamily vellux::familyAt(std::uint8_t byDeviceIndex) {
    return byDeviceIndex < asDeviceInfo.size() ? lightFamily(asDeviceInfo[byDeviceIndex]) : LightFamily::None;
}

bool VelluxFindDevices(std::int32_t& nDeviceCount) {
    vellux::assertMainThread();
    nDeviceCount = 0;
    const bool bManagerExisted = gIOHIDManagerRef != nullptr;
    HidManager& manager = vellux::platform().hidManager;
    if (!bManagerExisted) {
        if (!manager.create())
            return false;
        gIOHIDManagerRef = &manager;
        manager.setDeviceMatchingMultiple(matchingEntries());
        manager.registerDeviceMatchingCallback(Handle_DeviceMatchingCallback);
        manager.registerDeviceRemovalCallback(Handle_DeviceRemovalCallback);
        manager.setScheduled(true);
        if (manager.open() != kIOReturnSuccess) // kept-on-purpose:opened-once
            return false;
    }

    const std::optional<HidDeviceList> set = manager.copyDevices();
    gnNumberOfVelluxDevices = 0;
    if (!set)
        return true; // kept-on-purpose:list-remembered
    auto list = std::make_shared<HidDeviceList>();
    for (const HidDeviceRef& device : *set)
        CFSetApplierFunctionCopyToCFArray(device, *list);
    nDeviceCount = static_cast<std::int32_t>(list->size());
    const std::size_t nClassified = std::min(list->size(), asDeviceInfo.size());
    for (std::size_t n = 0; n < nClassified; ++n)
        classify((*list)[n], asDeviceInfo[n]);
    gDeviceCFArrayRef.set(std::move(list));
    gnNumberOfVelluxDevices = nDeviceCount;
    return true;
}

// bDevicePlugged and asDeviceInfo stay as they are. (kept-on-purpose:release-leaves)
void VelluxReleaseDevices() {
    vellux::assertMainThread();
    gDeviceCFArrayRef.set(nullptr);
    if (gIOHIDManagerRef != nullptr) {
        gIOHIDManagerRef->registerDeviceMatchingCallback({});
        gIOHIDManagerRef->registerDeviceRemovalCallback({});
        gIOHIDManagerRef->setScheduled(false);
        gIOHIDManagerRef->close();
        gIOHIDManagerRef = nullptr;
    }
    gnNumberOfVelluxDevices = 0;
}

void IOHIDDevice_GetLongProperty(const HidDeviceRef& pIOHIDDeviceRef, std::string_view strKey,
                                 std::int64_t& nValue) {
    if (pIOHIDDeviceRef == nullptr)
        return;
    if (pIOHIDDeviceRef->typeID() != HidDevice::kTypeID) { // kept-on-purpose:assertion-text
        std::fputs("Assertion failed: (IOHIDDeviceGetTypeID () == CFGetTypeID (pIOHIDDeviceRef)), function "
                   "IOHIDDevice_GetLongProperty, file VelluxControl, line 46.\n",
                   stderr);
        std::abort();
    }
    const std::optional<std::int64_t> property =
        vellux::platform().hidManager.deviceGetProperty(pIOHIDDeviceRef, strKey);
    if (!property)
        return;
    constexpr std::uint64_t kUpperHalf = 0xFFFFFFFF00000000;
    nValue = static_cast<std::int64_t>((static_cast<std::uint64_t>(nValue) & kUpperHalf) |
                                       static_cast<std::uint32_t>(*property));
}

void CFSetApplierFunctionCopyToCFArray(const HidDeviceRef& value, HidDeviceList& list) {
    list.push_back(value);
}

// One flag for all lights, whichever of them the notice is about. (kept-on-purpose:one-plugged-flag)
void Handle_DeviceMatchingCallback(const HidDeviceRef&) {
    bDevicePlugged = true;
    vellux::platform().listener.devicePlugged();
}

void Handle_DeviceRemovalCallback(const HidDeviceRef&) {
    bDevicePlugged = false;
    vellux::platform().listener.deviceUnplugged();
}
