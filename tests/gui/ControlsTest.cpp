// The fourteen controls: the window shows the models and passes on what the user does.
#include "WindowFixture.h"
#include "fakes/WindowControls.h"

#include <span>

namespace {

using namespace control_rows;
using vellux::Button;

class ControlsFixture : public WindowFixture {
protected:
    bool isShownEnabled(const char* pName) { return widget<QWidget>(pName).isEnabled(); }
};

// A widget bound to another's model, or to one thread only; a write by a program that acts as if a user had
// done it; a box's third state lost, or there for users to choose.
TEST_F(ControlsFixture, ShowWhatAnyThreadWritesAndActOnNothing) {
    plugInFramed();
    journal.clear();
    for (const bool bOnWorker : {true, false}) {
        const auto write = [&](const std::function<void()>& change) {
            bOnWorker ? onWorker(change) : change();
        };
        for (const auto& row : kButtons) {
            SCOPED_TRACE(row.pName);
            const auto model = (ui().*row.getter)();
            auto& button = widget<QAbstractButton>(row.pName);
            const std::int64_t nState = model->state();
            write([&] {
                model->setTitle("A & " + std::string(row.pName));
                model->setState(nState == Button::kOn ? Button::kOff : Button::kOn);
            });
            EXPECT_EQ(button.text().remove('&').toStdString(), "A  " + std::string(row.pName));
            EXPECT_EQ(button.isChecked(), button.isCheckable() && nState == Button::kOff);
            if (auto* const pBox = qobject_cast<QCheckBox*>(&button)) {
                write([&] { model->setState(Button::kMixed); });
                EXPECT_EQ(pBox->checkState(), Qt::PartiallyChecked);
            }
            write([&] { model->setState(nState); });
        }
        for (const auto& row : kFields) {
            const auto model = (ui().*row.getter)();
            write([&] { model->setText(row.pName + std::string(" \xC3\xA9")); });
            EXPECT_EQ(widget<QLineEdit>(row.pName).text().toStdString(), model->text());
        }
        for (const auto& row : kLists) {
            const auto model = (ui().*row.getter)();
            const auto& list = widget<QComboBox>(row.pName);
            write([&] {
                model->removeAllItems();
                model->addItems({"one", "two", row.pName});
            });
            EXPECT_EQ(list.currentIndex(), -1) << row.pName;
            EXPECT_EQ(list.itemText(2), row.pName);
            write([&] { model->selectItemAtIndex(1); });
            EXPECT_EQ(list.currentText(), "two");
            write([&] { model->selectItemAtIndex(7); }); // there is none
            EXPECT_EQ(list.currentIndex(), -1) << row.pName;
        }
        forEach([&](const auto& row) {
            const auto model = (ui().*row.getter)();
            write([&] { model->setEnabled(!model->isEnabled()); });
            EXPECT_EQ(isShownEnabled(row.pName), model->isEnabled()) << row.pName;
        });
    }
    runPending();
    EXPECT_EQ(journal.take(), Lines{});
    EXPECT_EQ(ui().buttonSelectSyncMode()->state(), Button::kOn);
}

// A typed text that stays in the window, a secret in the open, an older text that comes back, a caret that
// jumps.
TEST_F(ControlsFixture, TextsAreInTheModelAtOnceAndStay) {
    const char* const texts[] = {"lync.example", "CORP\\pat", "secret"};
    for (int n = 0; n < 3; ++n) {
        type(kFields[n].pName, texts[n]);
        EXPECT_EQ((ui().*kFields[n].getter)()->text(), texts[n]);
    }
    EXPECT_EQ(widget<QLineEdit>("textFieldPassword").displayText().count(QChar('s')), 0);
    auto& server = widget<QLineEdit>("textFieldLyncServerName");
    std::jthread([this] { ui().textFieldLyncServerName()->setText("older"); }).join();
    server.setCursorPosition(4);
    QTest::keyClick(&server, Qt::Key_X); // while the worker's change is still to be shown
    runPending();
    EXPECT_EQ(server.text(), "lyncx.example");
    EXPECT_EQ(ui().textFieldLyncServerName()->text(), "lyncx.example");
    server.setSelection(1, 3);
    onWorker([this] { ui().textFieldLyncServerName()->setEnabled(true); });
    EXPECT_EQ(server.selectedText(), "ync");
    EXPECT_TRUE(widget<QLineEdit>("textFieldLyncStatus").isReadOnly());
}

// A mode without an action, a radio button beside the other's state, or a user who can reach "mixed".
TEST_F(ControlsFixture, ButtonsTellWhatTheUserDoes) {
    click("buttonSelectManualMode");
    EXPECT_FALSE(isShownEnabled("textFieldLyncServerName") || isShownEnabled("buttonConnect"));
    EXPECT_TRUE(isShownEnabled("manualModeColorList"));
    EXPECT_TRUE(widget<QRadioButton>("buttonSelectManualMode").isChecked());
    QTest::keyClick(&widget<QRadioButton>("buttonSelectManualMode"), Qt::Key_Up);
    EXPECT_TRUE(isShownEnabled("textFieldLyncServerName") && isShownEnabled("buttonConnect"));
    EXPECT_FALSE(isShownEnabled("manualModeColorList"));
    EXPECT_EQ(ui().buttonSelectManualMode()->state(), Button::kOff);
    for (const auto& row : std::span(kButtons).subspan(2, 3)) { // the boxes
        const auto model = (ui().*row.getter)();
        for (const std::int64_t nBefore : {Button::kOff, Button::kOn, Button::kMixed}) {
            model->setState(nBefore);
            click(row.pName);
            EXPECT_EQ(model->state(), nBefore == Button::kOn ? Button::kOff : Button::kOn) << row.pName;
        }
    }
    EXPECT_TRUE(isShownEnabled("syncModeColorList") && isShownEnabled("syncModeFlashSpeedList"));
    // Assistive technology changes a box without clicking it.
    widget<QCheckBox>("buttonFlashOnCall").toggle();
    runPending();
    EXPECT_EQ(ui().buttonFlashOnCall()->state(), Button::kOff);
    EXPECT_FALSE(isShownEnabled("syncModeColorList"));
}

// Boxes that switch nothing off: the wrong action, or one called before the model has the state.
TEST_F(ControlsFixture, BoxesSwitchTheLight) {
    plugInFramed();
    connectByHand();
    const struct {
        const char *pPresence, *pBox, *pColour;
    } rows[] = {{"Away", "buttonLightOffOnAway", "cf"}, {"Online", "buttonLightOffOnAvailable", "df"}};
    for (const auto& [pPresence, pBox, pColour] : rows) {
        ui().updateVelluxStatusWithPresence(pPresence);
        journal.clear();
        click(pBox);
        click(pBox);
        EXPECT_EQ(journal.take({"report"}),
                  (Lines{"report 55534243004002ff", "report 55534243004002" + std::string(pColour)}));
    }
}

// An entry that looks chosen after a refill; a second choice of an entry that does nothing; a list with
// another's action; arrow keys that only look.
TEST_F(ControlsFixture, ListsTellEveryChoice) {
    plugInPlain();
    clock.letRun();
    click("buttonSelectManualMode");
    choose("manualModeFlashSpeedList", 0);
    hid.noticeArrival(FakeHidManager::light(0x1130, 0x1E00));
    runPending();
    for (const char* const pList : {"syncModeColorList", "manualModeColorList"}) {
        EXPECT_EQ(widget<QComboBox>(pList).currentIndex(), -1);
        EXPECT_EQ(widget<QComboBox>(pList).count(), 8);
    }
    journal.clear();
    for (int n = 0; n < 2; ++n) {
        choose("manualModeColorList", 0);
        EXPECT_GE(journal.count("report 60..00"), 1U) << n;
        journal.clear();
    }
    QTest::keyClick(&widget<QComboBox>("manualModeColorList"), Qt::Key_Down);
    EXPECT_FALSE(journal.take({"report"}).empty());
    click("buttonSelectSyncMode");
    click("buttonFlashOnCall");
    choose("syncModeColorList", 3);
    choose("syncModeFlashSpeedList", 2);
    ui().saveUiState();
    EXPECT_EQ(contentOf(settingsPath("uistate.txt")), "1;1;0;0;3;2;1;0");
}

// The press on the mode that is chosen already, which would forget the connection, or a wheel that scrolls
// past a list and chooses from it.
TEST_F(ControlsFixture, WhatChangesNothingIsNoAction) {
    connectByHand();
    observeControls(/*bAllControls=*/true);
    click("buttonSelectSyncMode");
    EXPECT_EQ(journal.take(), Lines{});
    click("buttonSelectManualMode");
    journal.clear();
    click("buttonSelectManualMode");
    auto& list = widget<QComboBox>("manualModeColorList");
    const auto turn = [&list] {
        QWheelEvent wheel({5, 5}, list.mapToGlobal(QPointF(5, 5)), {}, {0, -120}, {}, {}, {}, false);
        QApplication::sendEvent(&list, &wheel);
    };
    turn();
    EXPECT_FALSE(list.hasFocus());
    EXPECT_EQ(journal.take(), Lines{});
    list.setFocus();
    turn();
    EXPECT_EQ(ui().manualModeColorList()->indexOfSelectedItem(), 1);
    journal.clear();
}

// A list without colours, or one that offers what the light can't show without saying so; one that looks as
// if nothing were in force after a refill.
TEST_F(ControlsFixture, ListsShowColoursAndWhatIsInForce) {
    const auto& list = widget<QComboBox>("manualModeColorList");
    const auto shown = [&list](int nIndex) { return list.itemText(nIndex).toStdString(); };
    const auto picture = [&list](int nIndex) { return list.itemIcon(nIndex).pixmap(16).toImage(); };
    const QImage none = picture(8);
    for (int n = 0; n < 8; ++n)
        EXPECT_NE(picture(n), picture(n + 1)) << n;
    ui().manualModeColorList()->selectItemAtIndex(2);
    EXPECT_EQ(list.accessibleDescription(), "");
    const auto light = plugInFramed();
    EXPECT_EQ(list.accessibleDescription(), "In force: Yellow");
    EXPECT_EQ(shown(6) + ", " + shown(7), "White, None (not on this light)");
    EXPECT_EQ(picture(7), none);
    hid.simulateRemoval(light);
    plugInV30();
    EXPECT_EQ(shown(7) + ", " + shown(8), "Orange, None");
}

// A keyboard user who is sent to the start of the window by each press of Connect.
TEST_F(ControlsFixture, ConnectKeepsTheFocusOverItsOwnWork) {
    auto& button = widget<QPushButton>("buttonConnect");
    button.setFocus();
    onWorker([this] { ui().buttonConnect()->setEnabled(false); });
    EXPECT_FALSE(button.hasFocus());
    onWorker([this] { ui().buttonConnect()->setEnabled(true); });
    EXPECT_TRUE(button.hasFocus());
}

} // namespace
