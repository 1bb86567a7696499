// From a presence token to what the light shows.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxHttp/VelluxHttp.h"
#include "model/Colour.h"
#include "support/Text.h"

#include <string_view>

namespace {

struct StatusRow {
    std::string_view strStatus;
    std::int32_t nColor;
};

constexpr StatusRow kAway = {"away", vellux::kColourYellow};
constexpr StatusRow kOnline = {"online", vellux::kColourGreen};
constexpr StatusRow kStatusRows[] = {
    kAway,
    {"berightback", vellux::kColourYellow},
    {"busy", vellux::kColourRed},
    {"idlebusy", vellux::kColourRed},
    {"donotdisturb", vellux::kColourPurple},
    kOnline,
    {"idleonline", vellux::kColourYellow},
    {"none", vellux::kColourOff},
    {"offline", vellux::kColourOff},
};

std::int32_t colourOf(const std::optional<std::string>& strStatus) {
    for (const StatusRow& row : kStatusRows)
        if (strStatus == row.strStatus)
            return row.nColor;
    return vellux::kColourOff;
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
    showPresence({lowered(strToken), VelluxHttp::sharedVelluxHttp().IsUserOnCall()});
    controls.textFieldLyncStatus->setText(strToken.value_or(""));
}

void VelluxWindowUi::showPresence(const PresenceReading& reading) {
    const auto isFlashOnCall = [this] { return controls.buttonFlashOnCall->state() == Button::kOn; };
    const auto hasNoCallColour = [this] { return indexOfSyncModeColorList == vellux::kColourOff; };
    // lyncStatus keeps what it was before the call. (kept-on-purpose:call-keeps-status)
    if (reading.bOnCall && isFlashOnCall() && !hasNoCallColour()) {
        onSyncModeFlashSpeedListSelection(*controls.syncModeFlashSpeedList);
        return;
    }
    stopSyncFlashing();
    updateVelluxStatus(reading.strStatus);
    // The presence's colour first, then off. (kept-on-purpose:off-after-colour) Both are read again: the user
    // may have changed them while the worker ended.
    if (reading.bOnCall && hasNoCallColour() && isFlashOnCall())
        displayVelluxColor(vellux::kColourOff);
}

void VelluxWindowUi::updateVelluxStatus(const std::optional<std::string>& strStatus) {
    lyncStatus.set(strStatus);
    nCurrentVelluxColor = colourOf(strStatus);
    // Only these two pass through the boxes; "berightback" and "idleonline" never do.
    // (kept-on-purpose:boxes-for-two-words)
    if (strStatus == kAway.strStatus)
        onlightOffOnAway(nullptr);
    else if (strStatus == kOnline.strStatus)
        onlightOffOnAvailable(nullptr);
    else
        displayVelluxColor(nCurrentVelluxColor);
}

void VelluxWindowUi::onlightOffOnAway(const Button*) {
    if (lyncStatus.get() == kAway.strStatus)
        showUnlessSwitchedOff(*controls.buttonLightOffOnAway, kAway.nColor);
}

void VelluxWindowUi::onlightOffOnAvailable(const Button*) {
    if (lyncStatus.get() == kOnline.strStatus)
        showUnlessSwitchedOff(*controls.buttonLightOffOnAvailable, kOnline.nColor);
}

// A box that is neither on nor off shows nothing.
void VelluxWindowUi::showUnlessSwitchedOff(const Button& box, std::int32_t nColor) {
    const std::int64_t nState = box.state();
    if (nState == Button::kOn)
        displayVelluxColor(vellux::kColourOff);
    else if (nState == Button::kOff)
        displayVelluxColor(nColor);
}
