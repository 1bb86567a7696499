#include "adapters/linux/UdevRuleCommand.h"

#include <array>
#include <cstdio>

namespace vellux {

std::string udevRuleCommand(std::uint16_t nVendorID, std::uint16_t nProductID) {
    std::array<char, 256> text{};
    std::snprintf(
        text.data(), text.size(),
        R"(echo 'SUBSYSTEM=="hidraw", ATTRS{idVendor}=="%04x", ATTRS{idProduct}=="%04x", TAG+="uaccess"')"
        " | sudo tee -a /etc/udev/rules.d/71-vellux-local.rules && sudo udevadm control --reload"
        " && sudo udevadm trigger --subsystem-match=hidraw",
        nVendorID, nProductID);
    return text.data();
}

} // namespace vellux
