// The one id under which the desktop knows the program: bus name, desktop file, service file, metainfo and
// icon.
#pragma once

namespace vellux {

inline constexpr const char* kApplicationId = "org.vellux.Vellux";

} // namespace vellux
