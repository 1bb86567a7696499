// The simulation with the program's real window.
#pragma once

#include "Options.h"

namespace vellux::simulator {

/// Shows the main window, with the embedded server's account filled in, and beside it a panel with the light
/// and what the world does; or takes pictures when the options say so. Returns the exit status when the user
/// has ended the program. Without a display the process ends with status 1. Once per process.
int showWindow(char* strProgram, const Options& options);

} // namespace vellux::simulator
