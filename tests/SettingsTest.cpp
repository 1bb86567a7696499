// The window-state file and the settings file.
#include "fakes/ProgramFixture.h"

#include <ostream>
#include <sys/stat.h>

namespace {

using std::filesystem::perms;

class SettingsFixture : public ProgramFixture {
protected:
    SettingsFixture() { umask(0); }
    const std::string strState = settingsPath("uistate.txt"), strConfig = settingsPath("configv31.bin");
    static perms modeOf(const std::string& strPath) { return std::filesystem::status(strPath).permissions(); }
    std::string savedState() {
        ui().saveUiState();
        return contentOf(strState);
    }
    std::string typed() {
        return ui().textFieldLyncServerName()->text() + "|" + ui().textFieldUsername()->text() + "|" +
               ui().textFieldPassword()->text();
    }
};

// A first start that connects to nobody, hides its window, or leaves files that others can read.
TEST_F(SettingsFixture, FirstStartCreatesTwoEmptyPrivateFiles) {
    observeControls();
    type("as", "de", "signed");
    ui().initConfig();
    EXPECT_EQ(journal.take({"window", "title", "alert"}), Lines{"window main front"});
    EXPECT_EQ(modeOf(directory / "Vellux"), perms(0700));
    EXPECT_EQ(modeOf(strConfig), perms(0600));
    EXPECT_EQ(contentOf(strConfig) + contentOf(strState), "");
    EXPECT_TRUE(std::filesystem::is_regular_file(strState) && std::filesystem::is_regular_file(strConfig));
    EXPECT_EQ(typed(), "as|de|signed");
    EXPECT_EQ(ui().buttonSelectSyncMode()->state(), 1);
}

// A field of the state file from the wrong place: colours are what is remembered, speeds what the lists show.
TEST_F(SettingsFixture, StateFileHoldsEightNumbers) {
    ui().initConfig();
    EXPECT_EQ(savedState(), "1;0;0;0;0;1;0;2");
    choose(OffOnAway, 1);
    choose(ManualColour, 5);
    choose(SyncColour, 7);
    ui().syncModeColorList()->selectItemAtIndex(3); // shown, not remembered
    ui().syncModeFlashSpeedList()->selectItemAtIndex(2);
    ui().manualModeFlashSpeedList()->selectItemAtIndex(-1);
    EXPECT_EQ(savedState(), "1;0;1;0;7;2;5;-1");
}

// Bytes that other versions can't read, or a file that was readable by others and stays so.
TEST_F(SettingsFixture, SettingsFileIsWhatOpensslWrites) {
    writeContent(strConfig, "");
    chmod(strConfig.c_str(), 0666);
    ui().initConfig();
    EXPECT_EQ(modeOf(strConfig), perms(0600));
    chmod(strConfig.c_str(), 0644);
    type("s", "u", "p");
    ui().onConnectButtonClicked(*ui().buttonConnect());
    // openssl enc -aes-128-ecb -K 6b346d70723876747877326e6271367a | base64 -w0
    EXPECT_EQ(contentOf(strConfig), "Y/ChgK7JN8vsM6mPAXvarA==");
    EXPECT_EQ(modeOf(strConfig), perms(0600));
    runUntil([this] { return journal.count("alert Failed to get OAuthToken") == 1; }, "the refused sign-in");
    EXPECT_EQ(journal.lines({"request", "alert"}).size(), 3U); // one in vain, which two alerts say
}

struct StateRow {
    const char *strName, *strContent, *strSaved = "1;1;1;1;0;1;0;2"; // the defaults, with the check boxes on
    bool bCodeLight = false;
    friend void PrintTo(const StateRow& row, std::ostream* out) { *out << row.strName; }
};
struct StateFileFixture : SettingsFixture, testing::WithParamInterface<StateRow> {};

// Numbers clamped that are not to be, or not clamped that index a list; half a file restored.
TEST_P(StateFileFixture, IsRestoredWholeOrNotAtAll) {
    writeContent(strState, GetParam().strContent);
    for (const auto& box :
         {ui().buttonFlashOnCall(), ui().buttonLightOffOnAway(), ui().buttonLightOffOnAvailable()})
        box->setState(1);
    clock.letRun(); // entering manual mode waits for a worker it has just started
    if (GetParam().bCodeLight)
        hid.present(FakeHidManager::light(0x1130, 1));
    delegate().applicationDidFinishLaunching();
    std::filesystem::remove_all(strState);
    EXPECT_EQ(savedState(), GetParam().strSaved);
    EXPECT_EQ(ui().buttonSelectManualMode()->state(), 1 - ui().buttonSelectSyncMode()->state());
}
const StateRow kStateRows[] = {{"sync", "1;0;1;0;3;2;4;3", "1;0;1;0;3;2;4;3"},
                               {"manual", "0;1;0;1;3;2;4;3", "0;1;0;1;3;1;4;3"},
                               {"clamped", "0;1;1;0;12;2;12;3", "0;1;1;0;8;1;8;3"},
                               {"clampedOnACodeLight", "0;1;1;0;12;2;12;3", "0;1;1;0;7;1;7;3", true},
                               {"negative", "1;0;0;0;-3;-1;-4;-1", "1;0;0;0;-3;-1;-4;-1"},
                               {"negativeManual", "0;0;0;0;-3;-1;-4;-1", "0;0;0;0;-3;1;-1;-1"},
                               {"trailingNewline", "1;1;0;0;0;1;5;2\n", "1;1;0;0;0;1;5;2"},
                               {"loose", "1;01;true; 1; +3;2x;x4;", "1;0;0;0;3;2;0;0"},
                               {"noMode", ";1;1;1;1;1;1;1", "0;1;1;1;1;1;1;1"},
                               {"overflow", "1;0;0;0;99999999999999999999;1;4294967297;2", "1;0;0;0;8;1;8;2"},
                               {"seven", "0;0;0;0;3;2;4"},
                               {"nine", "0;0;0;0;3;2;4;3;"},
                               {"noUtf8", "0;0;0;0;3;2;4;\xFF"},
                               {"empty", ""}};
INSTANTIATE_TEST_SUITE_P(, StateFileFixture, testing::ValuesIn(kStateRows));

enum class Start { ShowsWindow, Connects, FillsFields, Alerts };
struct ConfigRow {
    const char *strName, *strContent;
    Start start = Start::ShowsWindow;
    friend void PrintTo(const ConfigRow& row, std::ostream* out) { *out << row.strName; }
};
struct ConfigFileFixture : SettingsFixture, testing::WithParamInterface<ConfigRow> {};

// A start that connects with half of the credentials, without being asked to, or not at all.
TEST_P(ConfigFileFixture, DecidesWhatStartUpDoes) {
    const Start start = GetParam().start;
    writeContent(strConfig, GetParam().strContent);
    writeContent(strState, start == Start::FillsFields ? "0;0;0;0;0;1;0;0" : ""); // manual mode
    observeControls();
    type("x", "x", "x");
    ui().initConfig();
    EXPECT_EQ(typed(), start == Start::ShowsWindow ? "x|x|x" : start == Start::Alerts ? "s||p" : "s|u|p");
    EXPECT_EQ(journal.count("window main front"), start == Start::ShowsWindow ? 1U : 0U);
    if (start == Start::Alerts)
        runUntil(
            [this] { return journal.count("alert Please ensure all fields are entered correctly") == 1; },
            "the alert");
    endThreads(); // frees the monitor, if one has been started
    EXPECT_EQ(journal.count("title Connecting..."),
              start == Start::Connects || start == Start::Alerts ? 1U : 0U);
    const Lines requests = journal.take({"request"});
    ASSERT_EQ(requests.size(), start == Start::Connects ? 1U : 0U);
    EXPECT_TRUE(requests.empty() || (requests[0].starts_with("request POST https://s/") &&
                                     requests[0].ends_with("=u&password=p")));
}
const ConfigRow kConfigRows[] = { // "s;u;p" and its like, as openssl encrypts them
    {"valid", "Y/ChgK7JN8vsM6mPAXvarA==", Start::Connects},
    {"manual", "Y/ChgK7JN8vsM6mPAXvarA==", Start::FillsFields},
    {"inLines", "Y/ChgK7J\r\nN8vsM6mP AXvarA==\n", Start::Connects},
    {"noUser", "MbYWFpBlQYsvbNeHBJnX1A==", Start::Alerts},
    {"two", "yTaN78TAsekYAWd7BVLfRA=="},
    {"four", "r5BewhuZFx9FUB86W1amog=="},
    {"noUtf8", "TwT1+aGvK9Yu9/1gQvB5sg=="},
    {"cutShort", "Y/ChgK7JN8vsM6mP"},
    {"altered", "Z/ChgK7JN8vsM6mPAXvarA=="},
    {"empty", ""},
    {"binary", "\xFF\x80\x01Y/Ch"},
    {"plain", "s;u;p"}};
INSTANTIATE_TEST_SUITE_P(, ConfigFileFixture, testing::ValuesIn(kConfigRows));

// A home that can't be written: the program runs on with its defaults.
TEST_F(SettingsFixture, NoDirectoryIsNoReasonToFail) {
    writeContent((directory / "Vellux").string(), "in the way");
    ui().initConfig();
    ui().saveUiState();
    type("s", "u", "p");
    ui().onConnectButtonClicked(*ui().buttonConnect());
    EXPECT_EQ(journal.take({"window", "alert", "request"}), Lines{"window main front"});
    EXPECT_EQ(contentOf((directory / "Vellux").string()), "in the way");
}

} // namespace
