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
        forgetSignIn();
    }
}

void VelluxWindowUi::reconnect() {
    if (vellux::isConnected(*controls.buttonConnect))
        onConnectButtonClicked(*controls.buttonConnect);
    if (controls.buttonConnect->title() == vellux::kTitleConnect)
        onConnectButtonClicked(*controls.buttonConnect);
}

void VelluxWindowUi::reconnectSilently() {
    vellux::assertMainThread();
    if (controls.buttonSelectSyncMode->state() != Button::kOn || !controls.buttonConnect->isEnabled())
        return;
    VelluxHttp::sharedVelluxHttp().abortEventChannelConnection(); // so that one poll is left
    startMonitor(/*bSilent=*/true);
}

void VelluxWindowUi::switchOffUntilReached() {
    vellux::assertMainThread();
    if (controls.buttonSelectSyncMode->state() != Button::kOn)
        return;
    stopSyncFlashing();
    displayVelluxColor(vellux::kColourOff);
}

void VelluxWindowUi::showLastPresence() {
    vellux::assertMainThread();
    updateVelluxStatusWithPresence(VelluxHttp::sharedVelluxHttp().getPresenceStatus());
}

void VelluxWindowUi::processLyncServerConnectionRequest() {
    vellux::assertMainThread();
    startMonitor(/*bSilent=*/false);
}

void VelluxWindowUi::signInByItself() {
    if (m_bSilentByItself)
        startMonitor(/*bSilent=*/true);
    else
        processLyncServerConnectionRequest();
}

void VelluxWindowUi::startMonitor(bool bSilent) {
    const std::uint64_t nSignIn = noteSignIn(bSilent);
    // An earlier monitor is neither stopped nor waited for. (kept-on-purpose:monitors-overlap)
    threadForLyncStatusMonitor = std::make_shared<vellux::WorkerThread>(
        [this, bSilent, nSignIn] {
            std::optional<AlertPopup::Silence> silence;
            if (bSilent)
                silence.emplace();
            lyncStatusMonitorThreadMainMethod(nSignIn);
        },
        vellux::WorkerThread::kHighestPriority);
    threadForLyncStatusMonitor->start();
    // Without a thread nothing has begun.
    const vellux::SignInStatus status = m_signIn.get();
    if (threadForLyncStatusMonitor->isFinished() && status.result == vellux::SignInStatus::Result::Running)
        noteEnd(nSignIn, vellux::SignInStatus::Result::Failed);
}

std::uint64_t VelluxWindowUi::noteSignIn(bool bAutomatic) {
    const std::uint64_t nSignIn = ++m_nSignIns;
    m_signIn.set({vellux::SignInStatus::Result::Running, vellux::SignInStep::SigningIn,
                  vellux::platform().clock.now(), bAutomatic, strUserName.get(), strFQDN.get(), nSignIn});
    return nSignIn;
}

void VelluxWindowUi::noteStep(std::uint64_t nSignIn, vellux::SignInStep step) {
    m_signIn.update([&](vellux::SignInStatus& status) {
        if (status.nNumber == nSignIn)
            status.step = step;
    });
}

void VelluxWindowUi::noteEnd(std::uint64_t nSignIn, vellux::SignInStatus::Result result) {
    m_signIn.update([&](vellux::SignInStatus& status) {
        if (status.nNumber == nSignIn)
            status.result = result;
    });
}

// One that is under way goes on, but what becomes of it is no longer told.
void VelluxWindowUi::forgetSignIn() {
    m_signIn.set({.nNumber = ++m_nSignIns});
}

void VelluxWindowUi::lyncStatusMonitorThreadMainMethod(std::optional<std::uint64_t> nGiven) {
    using vellux::SignInStep;
    using Result = vellux::SignInStatus::Result;
    const std::uint64_t nSignIn = nGiven ? *nGiven : noteSignIn(/*bAutomatic=*/false);
    VelluxHttp& client = VelluxHttp::sharedVelluxHttp();
    Button& button = *controls.buttonConnect;
    button.setEnabled(false);
    button.setTitle(vellux::kTitleConnecting);

    // The button stays disabled until the user has dismissed the alert.
    const auto fail = [&](const char* strMessage) {
        button.setTitle(vellux::kTitleConnect);
        noteEnd(nSignIn, VelluxHttp::wasPasswordRefused() ? Result::Refused : Result::Failed);
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
        noteEnd(nSignIn, Result::None);
        return;
    }
    const auto strToken = client.httpPost_GetOAuthToken(strHost, strUser, strSecret);
    if (!strToken)
        return fail("Failed to get OAuthToken");
    noteStep(nSignIn, SignInStep::FindingService);
    const auto strApplicationsUrl = client.httpGet_ApplicationServiceURL(strHost, strToken);
    if (!strApplicationsUrl)
        return fail("Failed to get ApplicationServiceURL");
    noteStep(nSignIn, SignInStep::Registering);
    const auto strPresenceUrl =
        client.httpPost_SetupApplicationsAndGetPresenceURL(strHost, strApplicationsUrl, strToken);
    if (!strPresenceUrl)
        return fail("Failed to do SetupApplicationsAndGetPresenceURL");

    noteStep(nSignIn, SignInStep::ReadingPresence);
    const auto strPresence = client.httpGet_MyPresence(strPresenceUrl, strToken);
    button.setTitle(vellux::kTitleDisconnect);
    // An absent one turns the light off. (kept-on-purpose:connected-without-presence)
    updateVelluxStatusWithPresence(strPresence);
    vellux::platform().mainThread.runAndWait([this] { httpGetEventChannels(); });
    // One that was forgotten meanwhile is followed all the same.
    m_signIn.update([&](vellux::SignInStatus& status) {
        if (status.nNumber == nSignIn || status.result == Result::None) {
            status.result = Result::Succeeded;
            status.strUser = strUser;
            status.strServer = strHost;
        }
    });
    button.setEnabled(true);
}

void VelluxWindowUi::httpGetEventChannels() {
    VelluxHttp::sharedVelluxHttp().httpGet_EventChannels();
}
