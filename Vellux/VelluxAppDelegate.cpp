#include "VelluxAppDelegate.h"

#include "AlertPopup.h"
#include "VelluxControl/VelluxControl.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/VelluxWindowUi.h"
#include "ports/Platform.h"

vellux::SharedInstanceSlot<VelluxAppDelegate> VelluxAppDelegate::sharedVelluxAppDelegateInstance;

namespace {
// User-initiated: no idle sleep, no suspension, no sudden or automatic termination.
constexpr std::uint64_t kUserInitiated = 0xFFFFFF;
} // namespace

VelluxAppDelegate& VelluxAppDelegate::sharedVelluxAppDelegate() {
    return vellux::sharedInstance(sharedVelluxAppDelegateInstance, [] { return new VelluxAppDelegate; });
}

void VelluxAppDelegate::applicationDidFinishLaunching() {
    vellux::assertMainThread();
    setActivity(vellux::platform().desktop.beginActivityWithOptions(
        kUserInitiated, "receiving OSC messages")); // kept-on-purpose:activity-reason
    const bool bFound = VelluxFindDevices(nNumberOfVelluxDevices);
    if (nNumberOfVelluxDevices != 0 && bFound)
        VelluxTurnOffLight(0); // refused before the first notice; kept-on-purpose:off-at-start
    VelluxWindowUi::sharedVelluxWindowUi().initConfig();
}

void VelluxAppDelegate::applicationWillTerminate() {
    vellux::assertMainThread();
    VelluxWindowUi& controller = VelluxWindowUi::sharedVelluxWindowUi();
    AlertPopup::sharedAlertPopup().endWaiting();
    controller.beginShutdown();
    controller.quitManualFlashingThread();
    controller.waitForManualFlashingThreadToExit();
    controller.quitSyncFlashingThread();
    controller.waitForSyncFlashingThreadToExit();
    VelluxHttp::sharedVelluxHttp().abortEventChannelConnection();
    controller.switchOffForGood();
    controller.saveUiState();
    VelluxReleaseDevices();
}

bool VelluxAppDelegate::applicationShouldHandleReopen(bool) {
    vellux::assertMainThread();
    if (m_window != nullptr)
        m_window->makeKeyAndOrderFront();
    return true;
}

void VelluxAppDelegate::applicationDidChangeOcclusionState() {} // kept-on-purpose:occlusion
