// From the JSON of one step to the step.
#pragma once

#include "day/Members.h"
#include "day/Script.h"

#include <optional>
#include <string>
#include <vector>

namespace vellux::simulator {

/// Appends the step that the object describes, or returns what is wrong with it.
std::optional<std::string> readStep(const nlohmann::json& object, std::vector<NamedStep>& steps);

} // namespace vellux::simulator
