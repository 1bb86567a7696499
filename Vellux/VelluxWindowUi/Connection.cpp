// Connect and Disconnect, and the status monitor's one pass from sign-in to the event channel.

#include "VelluxWindowUi/VelluxWindowUi.h"

#include "AlertPopup.h"
#include "VelluxHttp/VelluxHttp.h"
#include "model/Colour.h"
#include "model/ConnectTitle.h"
#include "ports/Platform.h"

namespace {

void alert(const char* strMessage) {
    AlertPopup::sharedAlertPopup().display("Vellux", strMessage);
}

constexpr const char* kFieldsAlert = "Please ensure all fields are entered correctly";

} // namespace

void VelluxWindowUi::onConnectButtonClicked(Button&) {
    vellux::assertMainThread();
    const std::string strTitle = controls.buttonConnect->title();
    if (strTitle == vellux::kTitleConnect) {
        const std::string strServer = controls.textFieldLyncServerName->text();
        const std::string strUser = controls.textFieldUsername->text();
        const std::string strSecret = controls.textFieldPassword->text();
        if (strServer.empty() || strUser.empty() || strSecret.empty()) { // kept-on-purpose:blank-fields
            alert(kFieldsAlert);
            return;
        }
        // What comes back from the file counts, not what was typed. (kept-on-purpose:credentials-from-file)
        writeSettings(strServer, strUser, strSecret);
        const bool bComplete = readSettings();
        controls.textFieldLyncStatus->setText(""); // before the monitor, which writes the presence there
        if (bComplete)
            processLyncServerConnectionRequest();
    } else if (strTitle == vellux::kTitleDisconnect) {
        VelluxHttp::sharedVelluxHttp().abortEventChannelConnection();
        controls.buttonConnect->setTitle(vellux::kTitleConnect);
        controls.textFieldLyncStatus->setText("Disconnected");
        stopSyncFlashing();
        displayVelluxColor(vellux::kColourOff);
        lyncStatus.set("");
    }
}

void VelluxWindowUi::reconnect() {
    if (vellux::isConnected(*controls.buttonConnect))
        onConnectButtonClicked(*controls.buttonConnect);
    if (controls.buttonConnect->title() == vellux::kTitleConnect)
        onConnectButtonClicked(*controls.buttonConnect);
}

void VelluxWindowUi::processLyncServerConnectionRequest() {
    vellux::assertMainThread();
    // An earlier monitor is neither stopped nor waited for. (kept-on-purpose:monitors-overlap)
    threadForLyncStatusMonitor = std::make_shared<vellux::WorkerThread>(
        [this] { lyncStatusMonitorThreadMainMethod(); }, vellux::WorkerThread::kHighestPriority);
    threadForLyncStatusMonitor->start();
}

void VelluxWindowUi::lyncStatusMonitorThreadMainMethod() {
    VelluxHttp& client = VelluxHttp::sharedVelluxHttp();
    Button& button = *controls.buttonConnect;
    button.setEnabled(false);
    button.setTitle(vellux::kTitleConnecting);

    // The button stays disabled until the user has dismissed the alert.
    const auto fail = [&button](const char* strMessage) {
        button.setTitle(vellux::kTitleConnect);
        alert(strMessage);
        button.setEnabled(true);
    };

    const std::string strHost = strFQDN.get();
    const std::string strUser = strUserName.get();
    const std::string strSecret = strPassword.get();
    if (strHost.empty() || strUser.empty() || strSecret.empty()) {
        alert(kFieldsAlert); // before the title, unlike fail(): kept-on-purpose:alert-before-title
        button.setEnabled(true);
        button.setTitle(vellux::kTitleConnect);
        return;
    }
    const auto strToken = client.httpPost_GetOAuthToken(strHost, strUser, strSecret);
    if (!strToken)
        return fail("Failed to get OAuthToken");
    const auto strApplicationsUrl = client.httpGet_ApplicationServiceURL(strHost, strToken);
    if (!strApplicationsUrl)
        return fail("Failed to get ApplicationServiceURL");
    const auto strPresenceUrl =
        client.httpPost_SetupApplicationsAndGetPresenceURL(strHost, strApplicationsUrl, strToken);
    if (!strPresenceUrl)
        return fail("Failed to do SetupApplicationsAndGetPresenceURL");

    const auto strPresence = client.httpGet_MyPresence(strPresenceUrl, strToken);
    button.setTitle(vellux::kTitleDisconnect);
    // An absent one turns the light off. (kept-on-purpose:connected-without-presence)
    updateVelluxStatusWithPresence(strPresence);
    vellux::platform().mainThread.runAndWait([this] { httpGetEventChannels(); });
    button.setEnabled(true);
}

void VelluxWindowUi::httpGetEventChannels() {
    VelluxHttp::sharedVelluxHttp().httpGet_EventChannels();
}
