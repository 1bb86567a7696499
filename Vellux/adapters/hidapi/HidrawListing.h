// The HID devices of now.
#pragma once

#include "adapters/hidapi/HidrawCatalogue.h"

#include <vector>

namespace vellux {

/// Every device with a hidraw node, in the order of their places in sysfs; one that leaves meanwhile may be
/// left out. Opens no device and waits for none. Any thread.
std::vector<HidrawEntry> listHidrawDevices();

} // namespace vellux
