// What the program tells other programs and scripts about itself.
#pragma once

#include <string>

namespace vellux {

/// All of it in fixed English words, which scripts compare: they are never translated. What they are is
/// written in docs/status-interface.md. Before the first one is told, everything but the state is empty.
struct ProgramStatus {
    std::string strState = "starting"; ///< "manual", "not connected", "connecting", "following", "ended", ...
    std::string strPresence;           ///< as the server spells it; "" while it is not known
    bool bOnCall = false;              ///< false while it is not known
    std::string strLamp;               ///< "Green", "Red, flashing", "Off"
    std::string strLight;              ///< "none", "usable", "not permitted", "not usable"

    bool operator==(const ProgramStatus&) const = default;
};

/// The status as one line without its end: state, presence, "call" or "no call", lamp and light, separated by
/// tabs. "-" stands for an empty one, and a blank for each control character, which a server may send.
std::string statusLine(const ProgramStatus& status);

} // namespace vellux
