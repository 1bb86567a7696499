// The question of a script for the status of the running copy.
#pragma once

#include <QString>

#include <optional>

namespace vellux {

/// What came of the question.
struct StatusAnswer {
    std::optional<QString> strLine; ///< as statusLine() writes it; absent when none runs, or none answers
    bool bSilent = false;           ///< a copy runs, but doesn't answer
};

/// Asks the running copy, on its socket or else by its name on the session bus. Blocks for two seconds at
/// most. Needs an application object, and no display. Main thread.
StatusAnswer askStatus();

} // namespace vellux
