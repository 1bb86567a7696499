// Keeping the system from suspending the program.
#pragma once

#include "ports/Desktop.h"

#include <optional>
#include <string>

namespace vellux {

/// Asks the desktop portal (org.freedesktop.portal.Inhibit, suspend) on the session bus, else logind's idle
/// inhibitor on the system bus, and holds what it gets for as long as the reference lives. Returns at once:
/// the services are asked in the background, and where none answers nothing is held and nobody is told.
/// Absent without any bus. Main thread.
std::optional<ProcessActivity> beginProcessActivity(const std::string& strReason);

} // namespace vellux
