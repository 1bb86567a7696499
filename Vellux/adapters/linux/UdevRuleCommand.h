// The remedy for a light that the user may not open.
#pragma once

#include <cstdint>
#include <string>

namespace vellux {

/// A shell command that gives whoever sits at this computer permanent access to a light's hidraw nodes, by a
/// udev rule that sorts before the one that acts on the tag (73-seat-late.rules). Its file has a name of its
/// own, since a file in /etc would replace a package's of the same name. Asks for an administrator's
/// password.
std::string udevRuleCommand(std::uint16_t nVendorID, std::uint16_t nProductID);

} // namespace vellux
