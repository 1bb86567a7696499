// The colour lists, and the one operation through which colours reach the light.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxControl/VelluxControl.h"
#include "model/Colour.h"

#include <iterator>

namespace {

// By colour index.
constexpr VelluxResult (*kColourFunctions[])(std::uint8_t byDeviceIndex) = {
    VelluxTurnOnRedLight,     VelluxTurnOnGreenLight,  VelluxTurnOnYellowLight,
    VelluxTurnOnMagentaLight, VelluxTurnOnCyanLight,   VelluxTurnOnBlueLight,
    VelluxTurnOnWhiteLight,   VelluxTurnOnOrangeLight, VelluxTurnOffLight,
};
static_assert(std::size(kColourFunctions) == vellux::kColourCount);

} // namespace

std::int32_t VelluxWindowUi::displayVelluxColor(std::int32_t nColor) {
    const vellux::ScopedLock lock(m_displayLock);
    const std::int32_t nResult = sendVelluxColor(nColor);
    showOnLamp(nColor, nResult);
    return nResult;
}

// Doesn't change the lamp: for the dark half of a worker's cycle, since the lamp does not alternate.
std::int32_t VelluxWindowUi::sendVelluxColor(std::int32_t nColor) {
    const vellux::ScopedLock lock(m_displayLock);
    nCurrentVelluxColor = nColor; // whether it can be shown or not; kept-on-purpose:colour-recorded
    if (nNumberOfVelluxDevices == 0 || m_bDisplayClosed)
        return static_cast<std::int32_t>(kIOReturnNoDevice);
    if (!vellux::canShow(nColor, vellux::familyAt(0)))
        return static_cast<std::int32_t>(kIOReturnSuccess);
    const VelluxResult result = kColourFunctions[nColor](0); // kept-on-purpose:first-light-only
    if (result == kIOReturnSuccess)
        m_nOnLight = nColor;
    return static_cast<std::int32_t>(result);
}

// Under the display lock, so that the lamp changes in the same order as the light. A light that refused keeps
// what it showed, and so does one that doesn't have the colour: in a worker's cycle that is the dark half.
void VelluxWindowUi::showOnLamp(std::int32_t nColor, std::int32_t nResult) {
    const bool bLight = nNumberOfVelluxDevices != 0;
    if (m_bDisplayClosed || !vellux::isColour(nColor))
        return;
    if (bLight && nResult != static_cast<std::int32_t>(kIOReturnSuccess))
        return;
    const std::int32_t nShown =
        bLight && !vellux::canShow(nColor, vellux::familyAt(0)) ? m_nOnLight.load() : nColor;
    m_lamp.update([&](vellux::LampState& lamp) {
        lamp.nColor = nShown;
        lamp.bFlashing = nShown != vellux::kColourOff && m_nFlashers != 0;
    });
}

void VelluxWindowUi::switchOffForGood() {
    const vellux::ScopedLock lock(m_displayLock);
    displayVelluxColor(vellux::kColourOff);
    m_bDisplayClosed = true;
}

void VelluxWindowUi::makeColorArrays() {
    for (const vellux::Colour& colour : vellux::kColours) {
        if (colour.bForCodes)
            colorArray1.emplace_back(colour.strName);
        colorArray2.emplace_back(colour.strName);
    }
}

void VelluxWindowUi::fillColorLists() {
    const std::vector<std::string>& colors =
        vellux::takesCodes(vellux::familyAt(0)) ? colorArray1 : colorArray2;
    controls.syncModeColorList->removeAllItems();
    controls.manualModeColorList->removeAllItems();
    controls.syncModeColorList->addItems(colors);
    controls.manualModeColorList->addItems(colors);
}
