#include "adapters/hidraw/HidrawListing.h"

#include "adapters/hidraw/HotplugSource.h" // UdevPtr

#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <linux/hidraw.h>
#include <string>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>
#include <variant>

namespace vellux {

namespace {

// Why a device was not described: it has gone, or, if unknown, the system could not tell.
struct Failure {
    bool bUnknown = false;
};

// After a failed call, by errno: a device that has gone is known to be so; any other error says nothing about
// it.
Failure failure() {
    return {errno != ENOENT && errno != ENODEV && errno != ENXIO};
}

// Absent when the descriptor can't be read.
std::optional<std::uint16_t> primaryUsageOf(const std::string& strPlace) {
    std::array<std::uint8_t, 4096> bytes{}; // the kernel accepts none that is longer
    const int nFile = ::open((strPlace + "/report_descriptor").c_str(), O_RDONLY | O_CLOEXEC);
    if (nFile < 0)
        return std::nullopt;
    const ssize_t nRead = ::read(nFile, bytes.data(), bytes.size());
    const int nError = errno;
    ::close(nFile);
    errno = nError;
    if (nRead < 0)
        return std::nullopt;
    return primaryUsage({bytes.data(), static_cast<std::size_t>(nRead)});
}

// The kernel numbers HID devices as they appear, and the number is part of their sysfs path; the node gets a
// new inode whenever a driver binds to the device again.
std::string instanceOf(const char* strPlace, const char* strPath) {
    struct stat node {};
    const bool bNode = ::stat(strPath, &node) == 0;
    return std::string(strPlace) + '#' + (bNode ? std::to_string(node.st_ino) : "");
}

// The device as the system describes it, or why there is no description.
std::variant<HidrawEntry, Failure> describe(udev* pUdev, const char* strPlace) {
    errno = 0;
    const UdevPtr<udev_device> node(udev_device_new_from_syspath(pUdev, strPlace));
    if (node == nullptr)
        return failure();
    const char* strPath = udev_device_get_devnode(node.get());
    udev_device* pHid = udev_device_get_parent_with_subsystem_devtype(node.get(), "hid", nullptr); // node's
    if (strPath == nullptr || pHid == nullptr)
        return Failure{};
    const char* strHidPlace = udev_device_get_syspath(pHid);
    const char* strID = udev_device_get_property_value(pHid, "HID_ID"); // bus:vendor:product
    unsigned nVendorID = 0;
    unsigned nProductID = 0;
    if (strHidPlace == nullptr || strID == nullptr ||
        std::sscanf(strID, "%*4x:%8x:%8x", &nVendorID, &nProductID) != 2)
        return Failure{};
    const auto nUsage = primaryUsageOf(strHidPlace);
    if (!nUsage)
        return failure();
    return HidrawEntry{strPath, instanceOf(strPlace, strPath), static_cast<std::uint16_t>(nVendorID),
                       static_cast<std::uint16_t>(nProductID), *nUsage};
}

// Checks for udevd's control socket.
bool isUdevRunning() {
    return ::access("/run/udev/control", F_OK) == 0;
}

} // namespace

std::optional<std::vector<HidrawEntry>> listHidrawDevices() {
    const UdevPtr<udev> context(udev_new());
    if (context == nullptr)
        return std::nullopt;
    const UdevPtr<udev_enumerate> enumeration(udev_enumerate_new(context.get()));
    if (enumeration == nullptr || udev_enumerate_add_match_subsystem(enumeration.get(), "hidraw") < 0)
        return std::nullopt;
    // A node that udev is still processing doesn't have its permissions yet; udev's event will follow.
    if (isUdevRunning() && udev_enumerate_add_match_is_initialized(enumeration.get()) < 0)
        return std::nullopt;
    if (udev_enumerate_scan_devices(enumeration.get()) < 0)
        return std::nullopt;
    std::vector<HidrawEntry> devices;
    udev_list_entry* pEntry = nullptr;
    udev_list_entry_foreach(pEntry, udev_enumerate_get_list_entry(enumeration.get())) {
        auto described = describe(context.get(), udev_list_entry_get_name(pEntry));
        if (auto* const pDevice = std::get_if<HidrawEntry>(&described))
            devices.push_back(std::move(*pDevice));
        else if (std::get<Failure>(described).bUnknown)
            return std::nullopt;
    }
    return devices;
}

HidrawNode openHidrawNode(const std::string& strPath) {
    const int nDescriptor = ::open(strPath.c_str(), O_RDWR | O_CLOEXEC);
    if (nDescriptor < 0)
        return {-1, static_cast<HidResult>(errno)};
    // Opening succeeds even if the light is unplugged while the kernel powers it up. Only a node that answers
    // this ioctl has a device behind it.
    int nDescriptorSize = 0;
    if (::ioctl(nDescriptor, HIDIOCGRDESCSIZE, &nDescriptorSize) < 0) {
        const auto nRefusal = static_cast<HidResult>(errno);
        ::close(nDescriptor);
        return {-1, nRefusal};
    }
    return {nDescriptor, 0};
}

} // namespace vellux
