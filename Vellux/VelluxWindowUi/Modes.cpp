// Manual and sync mode, and the actions of the lists and of the flash-on-call box.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "VelluxControl/VelluxControl.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/FlashSpeeds.h"
#include "model/Colour.h"
#include "model/ConnectTitle.h"
#include "ports/Platform.h"

using vellux::LightFamily;

void VelluxWindowUi::clampToItems(std::atomic<std::int64_t>& nIndex, const ComboBox& list) const {
    const std::int64_t nItems = list.numberOfItems();
    if (nIndex >= nItems)
        nIndex = nItems - 1;
}

bool VelluxWindowUi::isToFlashOnCall() const {
    return controls.buttonFlashOnCall->state() == Button::kOn &&
           VelluxHttp::sharedVelluxHttp().IsUserOnCall();
}

void VelluxWindowUi::setManualMode(Button&) {
    vellux::assertMainThread();
    controls.buttonSelectManualMode->setState(Button::kOn);
    controls.buttonSelectSyncMode->setState(Button::kOff);
    controls.manualModeColorList->setEnabled(true);
    controls.manualModeFlashSpeedList->setEnabled(true);
    clampToItems(indexOfManualModeColorList, *controls.manualModeColorList);
    controls.manualModeColorList->selectItemAtIndex(indexOfManualModeColorList);
    controls.manualModeFlashSpeedList->selectItemAtIndex(indexOfManualModeFlashSpeedList);

    controls.textFieldLyncServerName->setEnabled(false);
    controls.textFieldUsername->setEnabled(false);
    controls.textFieldPassword->setEnabled(false);
    controls.buttonFlashOnCall->setEnabled(false);
    controls.buttonLightOffOnAway->setEnabled(false);
    controls.buttonLightOffOnAvailable->setEnabled(false);
    controls.syncModeColorList->setEnabled(false);
    controls.syncModeFlashSpeedList->setEnabled(false);
    controls.buttonConnect->setEnabled(false);

    VelluxHttp::sharedVelluxHttp().abortEventChannelConnection();
    // A light that arrives in manual mode gets here, too, with nothing connected any more.
    // (kept-on-purpose:reconnection-forgotten)
    bToConnect = vellux::isConnected(*controls.buttonConnect);
    controls.buttonConnect->setTitle(vellux::kTitleConnect);
    controls.textFieldLyncStatus->setText("");
    stopSyncFlashing();
    forgetSignIn();

    onManualModeColorListSelection(*controls.manualModeColorList);
    // Has run already unless the colour is off. (kept-on-purpose:speed-action-twice)
    onManualModeFlashSpeedListSelection(*controls.manualModeFlashSpeedList);
}

// The light keeps the manual colour until the next presence. (kept-on-purpose:sync-keeps-colour)
void VelluxWindowUi::setSyncMode(Button&) {
    vellux::assertMainThread();
    controls.buttonSelectManualMode->setState(Button::kOff);
    controls.buttonSelectSyncMode->setState(Button::kOn);
    controls.textFieldLyncServerName->setEnabled(true);
    controls.textFieldUsername->setEnabled(true);
    controls.textFieldPassword->setEnabled(true);
    controls.buttonFlashOnCall->setEnabled(true);
    controls.buttonLightOffOnAway->setEnabled(true);
    controls.buttonLightOffOnAvailable->setEnabled(true);
    const bool bFlashOnCall = controls.buttonFlashOnCall->state() == Button::kOn;
    controls.syncModeColorList->setEnabled(bFlashOnCall);
    controls.syncModeFlashSpeedList->setEnabled(bFlashOnCall);
    controls.buttonConnect->setEnabled(true);
    controls.manualModeColorList->setEnabled(false);
    controls.manualModeFlashSpeedList->setEnabled(false);

    quitManualFlashingThread();
    waitForManualFlashingThreadToExit();

    clampToItems(indexOfSyncModeColorList, *controls.syncModeColorList);
    controls.syncModeColorList->selectItemAtIndex(indexOfSyncModeColorList);
    controls.syncModeFlashSpeedList->selectItemAtIndex(indexOfSyncModeFlashSpeedList);

    if (bToConnect) {
        bToConnect = false;
        signInByItself();
    }
}

void VelluxWindowUi::onManualModeColorListSelection(ComboBox& sender) {
    vellux::assertMainThread();
    indexOfManualModeColorList = sender.indexOfSelectedItem();
    if (indexOfManualModeColorList == vellux::kColourOff) {
        quitManualFlashingThread();
        waitForManualFlashingThreadToExit();
    } else {
        onManualModeFlashSpeedListSelection(*controls.manualModeFlashSpeedList);
    }
    displayVelluxColor(static_cast<std::int32_t>(indexOfManualModeColorList));
}

void VelluxWindowUi::onManualModeFlashSpeedListSelection(ComboBox& sender) {
    vellux::assertMainThread();
    const std::int64_t nPosition = sender.indexOfSelectedItem();
    indexOfManualModeFlashSpeedList = nPosition;
    quitManualFlashingThread();
    // A worker is not waited for: it ends after its cycle. (kept-on-purpose:steady-does-not-wait)
    if (nPosition == vellux::kSteadyPosition)
        displayVelluxColor(static_cast<std::int32_t>(indexOfManualModeColorList));
    const vellux::FlashSpeed* const pSpeed = vellux::manualFlashSpeed(nPosition);
    if (pSpeed != nullptr)
        flManualFlashTimeInterval = pSpeed->flHalfPeriod;
    if (nPosition == vellux::kSteadyPosition || indexOfManualModeColorList == vellux::kColourOff)
        return; // but not with nothing selected; kept-on-purpose:worker-without-speed

    const LightFamily family = vellux::familyAt(0);
    if (family == LightFamily::Levels)
        startHardwareFlash(pSpeed);
    else if (vellux::takesCodes(family))
        startManualFlashing();
}

// Unlike the manual one it does not ask whether the colour is off. (kept-on-purpose:call-colour-unasked)
void VelluxWindowUi::onSyncModeFlashSpeedListSelection(ComboBox& sender) {
    const std::int64_t nPosition = sender.indexOfSelectedItem();
    indexOfSyncModeFlashSpeedList = nPosition;
    quitSyncFlashingThread();
    const vellux::FlashSpeed* const pSpeed = vellux::syncFlashSpeed(nPosition);
    if (pSpeed != nullptr)
        flSyncFlashTimeInterval = pSpeed->flHalfPeriod;
    if (!isToFlashOnCall())
        return;

    const LightFamily family = vellux::familyAt(0);
    if (family == LightFamily::Levels) {
        displayVelluxColor(static_cast<std::int32_t>(indexOfSyncModeColorList));
        startHardwareFlash(pSpeed);
    } else if (vellux::takesCodes(family)) {
        restartSyncFlashing();
    }
}

void VelluxWindowUi::onSyncModeColorListSelection(ComboBox& sender) {
    vellux::assertMainThread();
    indexOfSyncModeColorList = sender.indexOfSelectedItem();
    onFlashOnCallCheckedChanged(*controls.buttonFlashOnCall);
    if (isToFlashOnCall())
        displayVelluxColor(static_cast<std::int32_t>(indexOfSyncModeColorList));
}

void VelluxWindowUi::onFlashOnCallCheckedChanged(Button&) {
    vellux::assertMainThread();
    const bool bFlashOnCall = controls.buttonFlashOnCall->state() == Button::kOn;
    if (!bFlashOnCall)
        stopSyncFlashing();
    controls.syncModeColorList->setEnabled(bFlashOnCall);
    controls.syncModeFlashSpeedList->setEnabled(bFlashOnCall);
    updateVelluxStatusWithPresence(VelluxHttp::sharedVelluxHttp().getPresenceStatus());
}
