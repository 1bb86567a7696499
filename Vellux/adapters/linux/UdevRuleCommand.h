// What helps against a light that the user may not open.
#pragma once

#include <cstdint>
#include <string>

namespace vellux {

/// One line for a terminal that grants whoever sits at this computer the hidraw nodes of a light, for good,
/// by a rule of udev's that sorts before the one that acts on the tag (73-seat-late.rules); its file has a
/// name of its own, since one in /etc would replace a package's file of the same name. Asks for an
/// administrator's password.
std::string udevRuleCommand(std::uint16_t nVendorID, std::uint16_t nProductID);

} // namespace vellux
