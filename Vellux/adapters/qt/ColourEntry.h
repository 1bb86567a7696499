// A colour as the colour lists show it.
#pragma once

#include "adapters/qt/ComboBoxBinding.h"
#include "model/LightFamily.h"

namespace vellux {

/// The colour's picture and name. Of an entry at a position that lights of the family don't have it says so;
/// without a light it says nothing. Main thread.
ComboBoxBinding::Entry colourEntry(std::int32_t nIndex, const std::string& strItem, LightFamily family);

} // namespace vellux
