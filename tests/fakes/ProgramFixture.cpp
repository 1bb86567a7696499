#include "fakes/ProgramFixture.h"

#include "fakes/WindowControls.h"

#include <fstream>
#include <iterator>
#include <type_traits>

ProgramFixture::ProgramFixture(std::unique_ptr<vellux::CallQueue> itsQueue, NoProgram)
    : queue(std::move(itsQueue)) {
    watchConnect();
}

void ProgramFixture::makeProgram(vellux::HttpTransport& itsTransport, vellux::Desktop& itsDesktop) {
    program.emplace(vellux::Program::Ports{hid, itsTransport, mainThread, clock, itsDesktop});
}

ProgramFixture::~ProgramFixture() {
    endProgram();
    EXPECT_EQ(journal.unseen(minded), Lines{}) << "nobody asked for these";
}

void ProgramFixture::endProgram() {
    clock.letRun();
    program->end();
}

void ProgramFixture::observeControls(bool bAllControls) {
    using Change = vellux::Control::Change;
    observations.push_back(ui().buttonConnect()->observe([this](Change change) {
        const auto button = ui().buttonConnect();
        if (change == Change::Title)
            journal.add("title " + button->title());
        else if (change == Change::Enabled)
            journal.add(button->isEnabled() ? "connect enabled" : "connect disabled");
    }));
    observations.push_back(ui().textFieldLyncStatus()->observe(
        [this](Change) { journal.add("status " + ui().textFieldLyncStatus()->text()); }));
    watchConnect();
    if (!bAllControls)
        return;

    // The journal's words for a change of a control.
    const auto told = [](const auto& control, Change change) -> std::string {
        using Control = std::decay_t<decltype(control)>;
        if (change == Change::Enabled)
            return control.isEnabled() ? "enabled" : "disabled";
        if constexpr (std::is_same_v<Control, vellux::Button>)
            return "state " + std::to_string(control.state());
        else if constexpr (std::is_same_v<Control, vellux::TextField>)
            return change == Change::Text ? "text" : "placeholder";
        else
            return change == Change::Items ? "items " + std::to_string(control.numberOfItems())
                                           : "selected " + std::to_string(control.indexOfSelectedItem());
    };
    control_rows::forEach([&](const auto& row) {
        const auto control = (ui().*row.getter)();
        const vellux::Control* const pControl = control.get();
        if (pControl == ui().buttonConnect().get() || pControl == ui().textFieldLyncStatus().get())
            return; // have lines of their own
        observations.push_back(control->observe([this, told, &row, &control = *control](Change change) {
            journal.add(std::string(row.pName) + ' ' + told(control, change));
        }));
    });
}

// The observer added last, since they are called in order.
void ProgramFixture::watchConnect() {
    const auto note = [this, button = ui().buttonConnect()] { bConnectNoticed = button->isEnabled(); };
    connectWatch = ui().buttonConnect()->observe([note](vellux::Control::Change) { note(); });
    note();
}

bool ProgramFixture::isConnectUsable(const std::string& strTitle) {
    return ui().buttonConnect()->title() == strTitle && bConnectNoticed;
}

void ProgramFixture::runUntil(const std::function<bool()>& condition, const char* strWhat) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    for (;;) {
        runPending();
        if (condition())
            return;
        if (std::chrono::steady_clock::now() > deadline) {
            FAIL() << "waited 60 s for " << strWhat << "; journal:\n"
                   << testing::PrintToString(journal.lines());
        }
        journal.waitForChange();
    }
}

void ProgramFixture::runUntilConnectShows(const std::string& strTitle) {
    runUntil([&] { return isConnectUsable(strTitle); }, "the Connect button");
}

void ProgramFixture::holdRequests(const std::string& strEnd) {
    transport.onRequest = [this, strEnd](const vellux::HttpRequest& request) {
        if (request.strUrl.ends_with(strEnd)) {
            reached.release();
            goOn.acquire();
        }
    };
}

std::shared_ptr<FakeHidDevice> ProgramFixture::plugIn(std::int64_t nVendor, std::int64_t nProduct) {
    auto device = FakeHidManager::light(nVendor, nProduct);
    hid.simulateArrival(device);
    runPending();
    journal.clear();
    return device;
}

void ProgramFixture::scriptServer(const std::string& strPresenceBody) {
    transport.script("/WebTicket/oauthtoken", R"({"token_type":"Bearer","access_token":"T0k3n"})");
    transport.script("/Autodiscover/AutodiscoverService.svc/root/oauth/user",
                     R"({"_links":{"applications":{"href":"https://pool.example/ucwa/applications"}}})");
    transport.script("/ucwa/applications",
                     R"({"_links":{"events":{"href":"/ucwa/events?ack=1"}},)"
                     R"("_embedded":{"me":{"_links":{"presence":{"href":"/ucwa/me/presence"}}}}})");
    scriptPresence(strPresenceBody);
}

void ProgramFixture::scriptPresence(const std::string& strPresenceBody) {
    transport.script("/ucwa/me/presence", strPresenceBody);
}

void ProgramFixture::type(const std::string& strServer, const std::string& strUser,
                          const std::string& strPassword) {
    ui().textFieldLyncServerName()->setText(strServer);
    ui().textFieldUsername()->setText(strUser);
    ui().textFieldPassword()->setText(strPassword);
}

void ProgramFixture::endThreads() {
    mainThread.close();
    vellux::WorkerThread::joinAll();
}

void ProgramFixture::connect() {
    type("lync.example", "CORP\\pat", "secret");
    ui().onConnectButtonClicked(*ui().buttonConnect());
    runUntilConnectShows("Disconnect");
}

void ProgramFixture::choose(Choice choice, std::int64_t nPosition) {
    const auto select = [&](const auto& list, void (VelluxWindowUi::*action)(vellux::ComboBox&)) {
        list->selectItemAtIndex(nPosition);
        (ui().*action)(*list);
    };
    const auto set = [&](const auto& box) {
        box->setState(nPosition);
        return box.get();
    };
    switch (choice) {
    case ManualColour:
        return select(ui().manualModeColorList(), &VelluxWindowUi::onManualModeColorListSelection);
    case ManualSpeed:
        return select(ui().manualModeFlashSpeedList(), &VelluxWindowUi::onManualModeFlashSpeedListSelection);
    case SyncColour:
        return select(ui().syncModeColorList(), &VelluxWindowUi::onSyncModeColorListSelection);
    case SyncSpeed:
        return select(ui().syncModeFlashSpeedList(), &VelluxWindowUi::onSyncModeFlashSpeedListSelection);
    case FlashOnCall:
        return ui().onFlashOnCallCheckedChanged(*set(ui().buttonFlashOnCall()));
    case OffOnAway:
        return ui().onlightOffOnAway(set(ui().buttonLightOffOnAway()));
    case OffOnAvailable:
        return ui().onlightOffOnAvailable(set(ui().buttonLightOffOnAvailable()));
    }
}

std::string ProgramFixture::settingsPath(const std::string& strName) const {
    return (directory / "Vellux" / strName).string();
}

std::string ProgramFixture::contentOf(const std::string& strPath) {
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void ProgramFixture::writeContent(const std::string& strPath, const std::string& strContent) {
    std::filesystem::create_directories(std::filesystem::path(strPath).parent_path());
    std::ofstream(strPath, std::ios::binary | std::ios::trunc) << strContent;
}
