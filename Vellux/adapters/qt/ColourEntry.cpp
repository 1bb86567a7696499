#include "adapters/qt/ColourEntry.h"

#include "adapters/qt/LampDrawing.h"
#include "adapters/qt/Words.h"
#include "model/Colour.h"

#include <QCoreApplication>

#include <algorithm>

namespace vellux {

ComboBoxBinding::Entry colourEntry(std::int32_t nIndex, const std::string& strItem, LightFamily family) {
    // By its name: the shorter list has "None" where the longer one has orange.
    const auto* const pColour = std::find_if(std::begin(kColours), std::end(kColours),
                                             [&](const Colour& each) { return strItem == each.strName; });
    if (pColour == std::end(kColours))
        return {shownWord(strItem), QIcon()};
    const QString strName = shownWord(strItem);
    const bool bShown = family == LightFamily::None || canShow(nIndex, family);
    return {bShown ? strName : QCoreApplication::translate("Lamp", "%1 (not on this light)").arg(strName),
            lampIcon({static_cast<std::int32_t>(pColour - std::begin(kColours)), /*bFlashing=*/false})};
}

} // namespace vellux
