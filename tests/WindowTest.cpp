// The window's set-up and its small actions.
#include "fakes/TestWorld.h"
#include "fakes/WindowControls.h"
#include "support/Text.h"

namespace {

using WindowTest = TestWorld;

// A step of start-up out of order: lists selected before they are filled, a mode set before its defaults.
TEST_F(WindowTest, startUpSetsTheControlsInOrder) {
    observeControls(true);
    ui().initConfig();
    const std::string strExpected =
        "syncModeColorList items 0, manualModeColorList items 0, syncModeColorList items 9, "
        "manualModeColorList items 9, textFieldLyncServerName placeholder, textFieldUsername placeholder, "
        "manualModeColorList selected 0, manualModeFlashSpeedList selected 2, buttonSelectManualMode state "
        "0, "
        "buttonSelectSyncMode state 1, textFieldLyncServerName enabled, textFieldUsername enabled, "
        "textFieldPassword enabled, buttonFlashOnCall enabled, buttonLightOffOnAway enabled, "
        "buttonLightOffOnAvailable enabled, syncModeColorList disabled, syncModeFlashSpeedList disabled, "
        "connect enabled, manualModeColorList disabled, manualModeFlashSpeedList disabled, "
        "syncModeColorList selected 0, syncModeFlashSpeedList selected 1, window main front";
    Lines lines = journal.take();
    for (std::string& strLine : lines)
        strLine = vellux::replaceAll(strLine, "control ", "");
    EXPECT_EQ(lines, vellux::split(strExpected, ", "));
    EXPECT_EQ(client().getPresenceStatus(), "");
    EXPECT_EQ(ui().buttonConnect()->title(), "Connect");
    vellux::Placeholder placeholder{"Domain\\Username", "Helvetica-Oblique", 13, 0.2F, 0.2F, 0.2F, 0.5};
    EXPECT_EQ(ui().textFieldUsername()->placeholder(), placeholder);
    ASSERT_TRUE(ui().textFieldLyncServerName()->placeholder());
    placeholder.strText = ui().textFieldLyncServerName()->placeholder()->strText;
    EXPECT_EQ(ui().textFieldLyncServerName()->placeholder(), placeholder);
    EXPECT_NE(placeholder.strText, "");
}

// A setter that writes another control's field.
TEST_F(WindowTest, eachControlHasItsOwnAccessors) {
    std::vector<std::function<void()>> checks; // after all setters, to notice one field written twice
    const auto set = [&]<typename T>(const ControlRow<T>& row) {
        const auto control = std::make_shared<T>();
        (ui().*row.setter)(control);
        checks.push_back([this, control, &row] { EXPECT_EQ((ui().*row.getter)(), control) << row.pName; });
    };
    std::for_each(std::begin(control_rows::kButtons), std::end(control_rows::kButtons), set);
    std::for_each(std::begin(control_rows::kFields), std::end(control_rows::kFields), set);
    std::for_each(std::begin(control_rows::kLists), std::end(control_rows::kLists), set);
    for (const auto& check : checks)
        check();
}

// A main window that closes for good, or a platform without About.
TEST_F(WindowTest, smallActions) {
    ui().onAbout(nullptr);
    ui().openLink(nullptr);
    ui().onExit(nullptr);
    EXPECT_FALSE(ui().windowShouldClose(desktop.main));
    EXPECT_EQ(journal.take(), (Lines{"desktop load AboutDialog", "desktop open https://vellux.example/",
                                     "desktop terminate", "window main out"}));
}

} // namespace
