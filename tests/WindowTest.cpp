// The window's set-up and its small actions.
#include "AboutDialog.h"
#include "fakes/TestWorld.h"
#include "support/Text.h"

namespace {

using Ui = VelluxWindowUi;

class WindowTest : public TestWorld {};

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
    std::vector<std::function<void()>>
        checks; // after all setters, so that one field written twice is noticed
    const auto set = [&]<typename T>(void (Ui::*setter)(std::shared_ptr<T>),
                                     std::shared_ptr<T> (Ui::*getter)() const) {
        const auto control = std::make_shared<T>();
        (ui().*setter)(control);
        checks.push_back([this, control, getter] { EXPECT_EQ((ui().*getter)(), control); });
    };
    set(&Ui::setButtonSelectSyncMode, &Ui::buttonSelectSyncMode);
    set(&Ui::setTextFieldLyncServerName, &Ui::textFieldLyncServerName);
    set(&Ui::setTextFieldUsername, &Ui::textFieldUsername);
    set(&Ui::setTextFieldPassword, &Ui::textFieldPassword);
    set(&Ui::setButtonFlashOnCall, &Ui::buttonFlashOnCall);
    set(&Ui::setButtonLightOffOnAway, &Ui::buttonLightOffOnAway);
    set(&Ui::setButtonLightOffOnAvailable, &Ui::buttonLightOffOnAvailable);
    set(&Ui::setSyncModeColorList, &Ui::syncModeColorList);
    set(&Ui::setSyncModeFlashSpeedList, &Ui::syncModeFlashSpeedList);
    set(&Ui::setButtonConnect, &Ui::buttonConnect);
    set(&Ui::setTextFieldLyncStatus, &Ui::textFieldLyncStatus);
    set(&Ui::setButtonSelectManualMode, &Ui::buttonSelectManualMode);
    set(&Ui::setManualModeColorList, &Ui::manualModeColorList);
    set(&Ui::setManualModeFlashSpeedList, &Ui::manualModeFlashSpeedList);
    for (const auto& check : checks)
        check();
}

// About windows that pile up or hide behind others, a main window that closes for good, a platform without About.
TEST_F(WindowTest, smallActions) {
    ui().onAbout(nullptr);
    const Lines opened = {"desktop load AboutDialog", "window about level modal panel", "window about front"};
    EXPECT_EQ(journal.take(), opened);
    ui().onAbout(nullptr);
    Lines lines = journal.take();
    EXPECT_EQ(std::erase(lines, "window about gone"), 1U);
    EXPECT_EQ(lines, opened);
    desktop.bHasAboutDescription = false;
    ui().onAbout(nullptr);
    EXPECT_EQ(journal.count("window about front"), 0U);
    EXPECT_TRUE(AboutDialog().windowShouldClose(nullptr));
    journal.clear();
    ui().openLink(nullptr);
    ui().onExit(nullptr);
    EXPECT_FALSE(ui().windowShouldClose(desktop.main));
    lines = journal.take();
    ASSERT_EQ(lines.size(), 3U);
    EXPECT_TRUE(lines[0].starts_with("desktop open http")) << lines[0];
    EXPECT_EQ(lines[1], "desktop terminate");
    EXPECT_EQ(lines[2], "window main out");
}

} // namespace
