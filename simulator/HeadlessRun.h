// The simulation without a window: plays one day.
#pragma once

#include "day/Script.h"
#include "light/ReportDecoder.h"

#include <string>

namespace vellux::simulator {

/// How the simulator ends.
enum ExitStatus : int { kAsExpected = 0, kNotAsExpected = 1, kNotUnderstood = 2 };

/// Says on standard error what is wrong, and returns the status.
int complain(ExitStatus status, const std::string& strText);

/// Plays one day from start-up to the end of the program; the exit status. Once per process.
int playDay(LightModel model, const Script& script);

} // namespace vellux::simulator
