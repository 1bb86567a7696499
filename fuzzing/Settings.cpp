// The window-state file and the settings file as the program finds them at its start, then what the user
// types before pressing Connect. Directory of the files: below TMPDIR.

#include "FuzzWorld.h"

#include "platform/PrivateDirectory.h"
#include "threads/WorkerThread.h"

#include <algorithm>
#include <fstream>
#include <iterator>

namespace {

int nSignIns = 0; // that were to start since the run began

} // namespace

// In place of the real ones: a platform that can't create threads. The only one requested is the one that
// signs in.
namespace vellux {
// NOLINTNEXTLINE(performance-unnecessary-value-param): the real one keeps it
WorkerThread::WorkerThread(std::function<void()> /*body*/, double dPriority)
    : m_state(std::make_shared<State>()), m_dPriority(dPriority) {}
void WorkerThread::start() {
    ++nSignIns;
    m_state->progress = Progress::Finished;
}
void WorkerThread::joinAll() {}
} // namespace vellux

namespace {

using fuzzing::require;

/// Server, user and password, as the fields show them.
std::vector<std::string> typed(VelluxWindowUi& ui) {
    return {ui.textFieldLyncServerName()->text(), ui.textFieldUsername()->text(),
            ui.textFieldPassword()->text()};
}
void type(VelluxWindowUi& ui, const std::vector<std::string>& texts) {
    ui.textFieldLyncServerName()->setText(texts[0]);
    ui.textFieldUsername()->setText(texts[1]);
    ui.textFieldPassword()->setText(texts[2]);
}

std::string contentOf(const std::string& strPath) {
    std::ifstream file(strPath, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}
void writeContent(const std::string& strPath, const std::string& strContent) {
    std::ofstream(strPath, std::ios::binary | std::ios::trunc) << strContent;
}

bool hasText(const std::string& strText) {
    return !strText.empty();
}

/// What ends up in the window-state file.
std::string savedState(VelluxWindowUi& ui, const std::string& strPath) {
    ui.saveUiState();
    std::string strState = contentOf(strPath);
    const auto fields = vellux::split(strState, ";");
    require(fields.size() == 8, "the window state has eight fields");
    for (const std::string& strField : fields)
        require(strField == std::to_string(vellux::integerValue(strField)), "a field is a number");
    for (std::size_t n = 0; n < 4; ++n)
        require(fields[n] == "0" || fields[n] == "1", "a mode or a box is on or off");
    for (const std::size_t n : {std::size_t{4}, std::size_t{6}})
        require(vellux::integerValue(fields[n]) < ui.manualModeColorList()->numberOfItems(),
                "a colour is clamped");
    return strState;
}

/// A directory of this process's own, in which the program has started once.
struct SettingsWorld {
    SettingsWorld() { world.ui().initConfig(); }

    const std::unique_ptr<vellux::simulator::PrivateDirectory> directory = [] {
        auto made = vellux::simulator::PrivateDirectory::create();
        require(made != nullptr, "there is a directory to work in");
        return made;
    }();
    const std::string strState = directory->path() + "/Vellux/uistate.txt";
    const std::string strConfig = directory->path() + "/Vellux/configv31.bin";
    fuzzing::World& world = *new fuzzing::World(directory->path());
};

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* pData, std::size_t nSize) {
    static const SettingsWorld files;
    VelluxWindowUi& ui = files.world.ui();
    auto parts = fuzzing::partsOf(fuzzing::textOf(pData, nSize));
    parts.resize(5);
    files.world.journal.clear();
    writeContent(files.strState, parts[0]);
    writeContent(files.strConfig, parts[1]);
    for (const auto& box :
         {ui.buttonFlashOnCall(), ui.buttonLightOffOnAway(), ui.buttonLightOffOnAvailable()})
        box->setState(vellux::Button::kOff);
    nSignIns = 0;
    type(ui, {"x", "y", "z;"});
    ui.initConfig();
    const auto restored = typed(ui);
    const bool bRestored = restored[2] != "z;"; // no stored part has a semicolon
    const bool bFollows = ui.buttonSelectSyncMode()->state() == vellux::Button::kOn;
    require(nSignIns == (bRestored && bFollows ? 1 : 0), "restored credentials sign in, in sync mode");
    const std::string strSaved = savedState(ui, files.strState);
    ui.initConfig();
    require(savedState(ui, files.strState) == strSaved, "the saved window state comes back");

    // The credentials that were restored, and those that are typed, come back from the file.
    for (const auto& texts : {restored, {parts[2], parts[3], parts[4]}}) {
        const bool bComplete = std::all_of(texts.begin(), texts.end(), hasText);
        bool bFits = bComplete;
        for (const std::string& strText : texts)
            bFits = bFits && strText.find(';') == std::string::npos && vellux::isUtf8(strText);
        const std::string strBefore = contentOf(files.strConfig);
        type(ui, texts);
        nSignIns = 0;
        ui.onConnectButtonClicked(*ui.buttonConnect());
        require(nSignIns == (bFits ? 1 : 0), "Connect signs in with what can be stored");
        require(bComplete || contentOf(files.strConfig) == strBefore,
                "nothing is stored before all is typed");
        if (!bFits)
            continue;
        type(ui, {"", "", ""});
        ui.initConfig();
        require(typed(ui) == texts, "what was typed comes back");
    }
    return 0;
}
