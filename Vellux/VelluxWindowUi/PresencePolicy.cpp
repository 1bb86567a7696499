// From a presence token to what the light shows.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/ColourIndex.h"
#include "support/Text.h"

#include <string_view>

namespace {

struct TokenRow {
    std::string_view strToken;
    std::int32_t nColor;
};

constexpr TokenRow kTokenRows[] = {
    {"away", kColourYellow},
    {"berightback", kColourYellow},
    {"busy", kColourRed},
    {"idlebusy", kColourRed},
    {"donotdisturb", kColourPurple},
    {"online", kColourGreen},
    {"idleonline", kColourYellow},
    {"none", kColourOff},
    {"offline", kColourOff},
};

std::int32_t colourOf(const std::optional<std::string>& strStatus) {
    for (const TokenRow& row : kTokenRows)
        if (strStatus == row.strToken)
            return row.nColor;
    return kColourOff;
}

std::optional<std::string> lowered(const std::optional<std::string>& strToken) {
    if (!strToken)
        return std::nullopt;
    return vellux::toLower(*strToken);
}

} // namespace

void VelluxWindowUi::updateVelluxStatusWithPresence(const std::optional<std::string>& strToken) {
    if (controls.buttonSelectSyncMode->state() != Button::kOn)
        return;
    const bool bOnCall = VelluxHttp::sharedVelluxHttp().IsUserOnCall();
    const bool bFlashOnCall = controls.buttonFlashOnCall->state() == Button::kOn;
    const bool bNoCallColour = indexOfSyncModeColorList == kColourOff;
    if (bOnCall && bFlashOnCall && !bNoCallColour) {
        onSyncModeFlashSpeedListSelection(*controls.syncModeFlashSpeedList);
    } else {
        stopSyncFlashing();
        updateVelluxStatus(lowered(strToken));
        if (bOnCall && bFlashOnCall)
            displayVelluxColor(kColourOff);
    }
    controls.textFieldLyncStatus->setText(strToken.value_or(""));
}

void VelluxWindowUi::updateVelluxStatus(const std::optional<std::string>& strStatus) {
    lyncStatus.set(strStatus);
    nCurrentVelluxColor = colourOf(strStatus);
    if (strStatus == "away")
        onlightOffOnAway(nullptr);
    else if (strStatus == "online")
        onlightOffOnAvailable(nullptr);
    else
        displayVelluxColor(nCurrentVelluxColor);
}

// Only these two exact tokens pass through the boxes; "berightback" and "idleonline" never do.

void VelluxWindowUi::onlightOffOnAway(const Button*) {
    if (lyncStatus.get() != "away")
        return;
    const std::int64_t nState = controls.buttonLightOffOnAway->state();
    if (nState == Button::kOn)
        displayVelluxColor(kColourOff);
    else if (nState == Button::kOff)
        displayVelluxColor(kColourYellow);
}

void VelluxWindowUi::onlightOffOnAvailable(const Button*) {
    if (lyncStatus.get() != "online")
        return;
    const std::int64_t nState = controls.buttonLightOffOnAvailable->state();
    if (nState == Button::kOn)
        displayVelluxColor(kColourOff);
    else if (nState == Button::kOff)
        displayVelluxColor(kColourGreen);
}
