// The day that is played when no script is given.
#pragma once

#include <string_view>

namespace vellux::simulator {

/// A working day, as a script's JSON text. It suits every light.
std::string_view defaultDay();

} // namespace vellux::simulator
