// The hidraw nodes of the system: which there are, and how one is opened.
#pragma once

#include "adapters/hidraw/HidrawCatalogue.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellux {

/// Every device with a hidraw node, in the order of their sysfs paths; one that leaves meanwhile may be
/// missing. Absent when the system can't tell, for instance without a free descriptor. Opens no device and
/// waits for none. Any thread.
[[nodiscard]] std::optional<std::vector<HidrawEntry>> listHidrawDevices();

/// What opening a node gives.
struct HidrawNode {
    /// The caller's to close; -1 when the node was refused.
    int nDescriptor = -1;
    /// errno of the refusal; 0 for an open node.
    HidResult nRefusal = 0;
};

/// Opens a node for writing, close-on-exec: ENODEV for one whose device has just left, ENOTTY for a file that
/// isn't a hidraw node. Blocks while the kernel powers the device up, or while a report is under way to any
/// device. Any thread.
[[nodiscard]] HidrawNode openHidrawNode(const std::string& strPath);

/// Where a device watch finds its devices. Both are called on its thread.
struct HidrawSystem {
    std::function<std::optional<std::vector<HidrawEntry>>()> list = listHidrawDevices;
    std::function<HidrawNode(const std::string& strPath)> open = openHidrawNode;
};

} // namespace vellux
