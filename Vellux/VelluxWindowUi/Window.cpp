// The shared instance with its controls, start-up, the small window actions and the device notices.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "AboutDialog.h"
#include "VelluxControl/VelluxControl.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/ColourIndex.h"
#include "ports/Platform.h"

vellux::SharedInstanceSlot<VelluxWindowUi> sharedVelluxWindowUiInstance;

namespace {

constexpr const char* kWebSite = "https://vellux.example/";

// Grey and half transparent, so that nobody takes an example for an entry.
vellux::Placeholder placeholder(std::string strText) {
    constexpr double kGrey = 0.2F;
    return {std::move(strText), "Helvetica-Oblique", 13, kGrey, kGrey, kGrey, 0.5};
}

} // namespace

VelluxWindowUi& VelluxWindowUi::sharedVelluxWindowUi() {
    return vellux::sharedInstance(sharedVelluxWindowUiInstance, [] { return new VelluxWindowUi; });
}

VelluxWindowUi::VelluxWindowUi() {
    const auto button = [](const char* strTitle, std::int64_t nState = Button::kOff) {
        return std::make_shared<Button>(strTitle, nState);
    };
    const auto textField = [] { return std::make_shared<TextField>(); };
    const auto comboBox = [](std::vector<std::string> items = {}) {
        return std::make_shared<ComboBox>(std::move(items));
    };
    controls.buttonSelectSyncMode = button("Follow my presence", Button::kOn);
    controls.textFieldLyncServerName = textField();
    controls.textFieldUsername = textField();
    controls.textFieldPassword = textField();
    controls.buttonFlashOnCall = button("Flash while on a call");
    controls.buttonLightOffOnAway = button("Light off while away");
    controls.buttonLightOffOnAvailable = button("Light off while available");
    controls.syncModeColorList = comboBox();
    controls.syncModeFlashSpeedList = comboBox({"Slow", "Medium", "Fast"});
    controls.buttonConnect = button("Connect");
    controls.textFieldLyncStatus = textField();
    controls.buttonSelectManualMode = button("Set the light myself");
    controls.manualModeColorList = comboBox();
    controls.manualModeFlashSpeedList = comboBox({"Steady", "Slow", "Medium", "Fast"});
}

void VelluxWindowUi::initConfig() {
    vellux::assertMainThread();
    colorArray1 = {"Red", "Green", "Yellow", "Purple", "Cyan", "Blue", "White", "None"};
    colorArray2 = {"Red", "Green", "Yellow", "Purple", "Cyan", "Blue", "White", "Orange", "None"};
    describeLight();
    fillColorLists();
    aesKey = "k4mpr8vtxw2nbq6z";
    nCurrentVelluxColor = kColourOff;
    strFQDN.set("");
    strUserName.set("");
    strPassword.set("");
    lyncStatus.set("");
    bToConnect = false;
    VelluxHttp::sharedVelluxHttp().setPresenceStatus("");
    setIndexOfSyncModeColorList(0);
    setIndexOfSyncModeFlashSpeedList(1);
    controls.textFieldLyncServerName->setPlaceholder(placeholder("lync.example.com"));
    controls.textFieldUsername->setPlaceholder(placeholder("Domain\\Username"));
    setIndexOfManualModeColorList(0);
    setIndexOfManualModeFlashSpeedList(2);
    controls.manualModeColorList->selectItemAtIndex(0);
    controls.manualModeFlashSpeedList->selectItemAtIndex(2);
    findOrCreateDirectory();
    setSyncMode(*controls.buttonSelectSyncMode);
    restoreUiState();
    restoreSettings();
}

void VelluxWindowUi::onAbout(const vellux::Control*) {
    vellux::assertMainThread();
    aboutDialog = std::make_unique<AboutDialog>();
    aboutDialog->initWithWindow(vellux::platform().desktop.loadWindow("AboutDialog", *aboutDialog));
    if (vellux::Window* const pWindow = aboutDialog->window()) {
        pWindow->setLevel(vellux::WindowLevel::ModalPanel);
        pWindow->makeKeyAndOrderFront();
    }
}

void VelluxWindowUi::openLink(const vellux::Control*) {
    vellux::assertMainThread();
    vellux::platform().desktop.openUrl(kWebSite);
}

void VelluxWindowUi::onExit(const vellux::Control*) {
    vellux::assertMainThread();
    vellux::platform().desktop.terminate();
}

bool VelluxWindowUi::windowShouldClose(vellux::Window& window) {
    vellux::assertMainThread();
    window.orderOut();
    return false;
}

void VelluxWindowUi::devicePlugged() {
    vellux::assertMainThread();
    std::int32_t nCount = 0;
    VelluxFindDevices(nCount);
    nNumberOfVelluxDevices = nCount;
    describeLight();
    if (nCount <= 0)
        return;
    if (m_light.get().access != vellux::LightState::Access::Usable) {
        const vellux::ScopedLock lock(displayLock);
        m_lamp.set({}); // it refuses what follows and stays as dark as it came
    }
    VelluxTurnOffLight(0);
    displayVelluxColor(nCurrentVelluxColor);
    if (controls.buttonSelectSyncMode->state() == Button::kOn)
        setSyncMode(*controls.buttonSelectSyncMode);
    else
        setManualMode(*controls.buttonSelectManualMode);
    fillColorLists();
}

void VelluxWindowUi::deviceUnplugged() {
    vellux::assertMainThread();
    std::int32_t nCount = 0;
    VelluxFindDevices(nCount);
    nNumberOfVelluxDevices = nCount;
    describeLight();
    bQuitManualFlashing = true;
    bQuitSyncFlashing = true;
}

void VelluxWindowUi::describeLight() {
    vellux::LightState light;
    const auto list = gDeviceCFArrayRef.get();
    if (list != nullptr && !list->empty()) {
        using Access = vellux::LightState::Access;
        const vellux::HidDeviceRef& first = list->front();
        vellux::HidManager& manager = vellux::platform().hidManager;
        const vellux::HidResult result = manager.deviceOpenResult(first);
        if (result == kIOReturnSuccess)
            light.access = Access::Usable;
        else
            light.access = manager.isPermissionRefusal(result) ? Access::NotPermitted : Access::NotUsable;
        std::int64_t nVendorID = 0;
        std::int64_t nProductID = 0;
        IOHIDDevice_GetLongProperty(first, "VendorID", nVendorID);
        IOHIDDevice_GetLongProperty(first, "ProductID", nProductID);
        light.byType = deviceTypeAt(0);
        light.nVendorID = static_cast<std::uint16_t>(nVendorID);
        light.nProductID = static_cast<std::uint16_t>(nProductID);
    }
    m_light.set(light);
}
