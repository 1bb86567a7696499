// The shared instance with its controls, start-up, and the small window actions.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "AboutDialog.h"
#include "VelluxHttp/VelluxHttp.h"
#include "VelluxWindowUi/FlashSpeeds.h"
#include "model/Colour.h"
#include "model/ConnectTitle.h"
#include "ports/Platform.h"

vellux::SharedInstanceSlot<VelluxWindowUi> sharedVelluxWindowUiInstance;

namespace {

// There is nothing on the net yet: the build says where the manual is on this computer.
constexpr const char* kWebSite = VELLUX_WEB_SITE;

// Grey and half transparent, so that nobody mistakes an example for an entry.
vellux::Placeholder placeholder(std::string strText) {
    constexpr double kGrey = 0.2F; // kept-on-purpose:grey
    return {std::move(strText), "Helvetica-Oblique", 13, kGrey, kGrey, kGrey, 0.5};
}

} // namespace

VelluxWindowUi& VelluxWindowUi::sharedVelluxWindowUi() {
    return vellux::sharedInstance(sharedVelluxWindowUiInstance, [] { return new VelluxWindowUi; });
}

VelluxWindowUi::VelluxWindowUi() {
    // The form has their texts, except for the one title that decides what a press does.
    const auto button = [](std::int64_t nState = Button::kOff) {
        return std::make_shared<Button>("", nState);
    };
    const auto textField = [] { return std::make_shared<TextField>(); };
    const auto comboBox = [](std::vector<std::string> items = {}) {
        return std::make_shared<ComboBox>(std::move(items));
    };
    controls.buttonSelectSyncMode = button(Button::kOn);
    controls.textFieldLyncServerName = textField();
    controls.textFieldUsername = textField();
    controls.textFieldPassword = textField();
    controls.buttonFlashOnCall = button();
    controls.buttonLightOffOnAway = button();
    controls.buttonLightOffOnAvailable = button();
    controls.syncModeColorList = comboBox();
    std::vector<std::string> speeds;
    for (const vellux::FlashSpeed& speed : vellux::kFlashSpeeds)
        speeds.emplace_back(speed.strName);
    controls.syncModeFlashSpeedList = comboBox(speeds);
    controls.buttonConnect = std::make_shared<Button>(vellux::kTitleConnect, Button::kOff);
    controls.textFieldLyncStatus = textField();
    controls.buttonSelectManualMode = button();
    controls.manualModeColorList = comboBox();
    speeds.insert(speeds.begin() + vellux::kSteadyPosition, vellux::kSteadyName);
    controls.manualModeFlashSpeedList = comboBox(speeds);
}

VelluxWindowUi::~VelluxWindowUi() = default; // here AboutDialog is complete

void VelluxWindowUi::initConfig() {
    vellux::assertMainThread();
    makeColorArrays();
    describeLight();
    fillColorLists();
    aesKey = "k4mpr8vtxw2nbq6z"; // kept-on-purpose:key-in-program
    nCurrentVelluxColor = vellux::kColourOff;
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
    setSyncMode(*controls.buttonSelectSyncMode); // whatever the file says; kept-on-purpose:sync-mode-first
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
