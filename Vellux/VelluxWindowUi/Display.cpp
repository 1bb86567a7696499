// The colour lists, and the one operation through which colours reach the light.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxControl/VelluxControl.h"
#include "VelluxWindowUi/ColourIndex.h"

#include <iterator>

namespace {

// By colour index.
constexpr VelluxResult (*kColourFunctions[])(std::uint8_t byDeviceIndex) = {
    VelluxTurnOnRedLight,     VelluxTurnOnGreenLight,  VelluxTurnOnYellowLight,
    VelluxTurnOnMagentaLight, VelluxTurnOnCyanLight,   VelluxTurnOnBlueLight,
    VelluxTurnOnWhiteLight,   VelluxTurnOnOrangeLight, VelluxTurnOffLight,
};
static_assert(std::size(kColourFunctions) == kColourOff + 1);

bool isCodeType(std::uint8_t byType) {
    return byType == 1 || byType == 2;
}

// Where there is no orange, its index is the entry "None" of the shorter list, and the light keeps what it
// shows: that entry is no switch.
bool canShow(std::int32_t nColor, std::uint8_t byType) {
    if (nColor < 0 || nColor > kColourOff)
        return false;
    return isV30Type(byType) || (isCodeType(byType) && nColor != kColourOrange);
}

} // namespace

std::int32_t VelluxWindowUi::displayVelluxColor(std::int32_t nColor) {
    const vellux::ScopedLock lock(displayLock);
    const std::int32_t nResult = sendVelluxColor(nColor);
    showOnLamp(nColor, nResult);
    return nResult;
}

// Without the lamp, for the dark half of a worker's cycle: the lamp does not alternate.
std::int32_t VelluxWindowUi::sendVelluxColor(std::int32_t nColor) {
    const vellux::ScopedLock lock(displayLock);
    nCurrentVelluxColor = nColor;
    if (nNumberOfVelluxDevices == 0 || bDisplayClosed)
        return static_cast<std::int32_t>(kIOReturnNoDevice);
    if (!canShow(nColor, deviceTypeAt(0)))
        return static_cast<std::int32_t>(kIOReturnSuccess);
    return static_cast<std::int32_t>(kColourFunctions[nColor](0));
}

// Under the display lock, so that the lamp has the light's order. A light that refused shows what it showed.
void VelluxWindowUi::showOnLamp(std::int32_t nColor, std::int32_t nResult) {
    const bool bLight = nNumberOfVelluxDevices != 0;
    if (bDisplayClosed || nColor < 0 || nColor > kColourOff)
        return;
    if (bLight &&
        (nResult != static_cast<std::int32_t>(kIOReturnSuccess) || !canShow(nColor, deviceTypeAt(0))))
        return;
    m_lamp.update([&](vellux::LampState& lamp) {
        lamp.nColor = nColor;
        lamp.bFlashing = nColor != kColourOff && m_nFlashers != 0;
    });
}

void VelluxWindowUi::setFlashing(Flasher flasher, bool bFlashing) {
    if (bFlashing)
        m_nFlashers |= flasher;
    else
        m_nFlashers &= ~static_cast<unsigned>(flasher);
    m_lamp.update(
        [this](vellux::LampState& lamp) { lamp.bFlashing = lamp.nColor != kColourOff && m_nFlashers != 0; });
}

void VelluxWindowUi::switchOffForGood() {
    const vellux::ScopedLock lock(displayLock);
    displayVelluxColor(kColourOff);
    bDisplayClosed = true;
}

void VelluxWindowUi::fillColorLists() {
    const std::vector<std::string>& colors = isCodeType(deviceTypeAt(0)) ? colorArray1 : colorArray2;
    controls.syncModeColorList->removeAllItems();
    controls.manualModeColorList->removeAllItems();
    controls.syncModeColorList->addItems(colors);
    controls.manualModeColorList->addItems(colors);
}
