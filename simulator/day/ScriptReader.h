// From a script's JSON text to its steps.
#pragma once

#include "day/Script.h"

#include <optional>
#include <string>
#include <string_view>
#include <variant>

namespace vellux::simulator {

/// What is wrong with a script, in words for its author.
struct ScriptError {
    std::string strText;
};

/// Reads a script, or returns its first fault. Comments as in C++ are allowed.
std::variant<Script, ScriptError> readScript(std::string_view strText);

} // namespace vellux::simulator
