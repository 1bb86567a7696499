// Keeping the system from suspending the program.
#pragma once

#include "ports/Desktop.h"

#include <optional>
#include <string>

namespace vellux {

/// Asks the desktop portal (org.freedesktop.portal.Inhibit, suspend) on the session bus, else logind's idle
/// inhibitor on the system bus, and holds the inhibition while the reference lives. Returns at once: the
/// services are asked in the background, and if none answers nothing is held and nothing is reported. Absent
/// without any bus. Main thread.
[[nodiscard]] std::optional<ProcessActivity> beginProcessActivity(const std::string& strReason);

} // namespace vellux
