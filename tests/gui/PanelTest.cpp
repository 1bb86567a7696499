// Where a user signs in: the fields that fold away, presses on Connect, the first focus.
#include "WindowFixture.h"

namespace {

class PanelFixture : public WindowFixture {
protected:
    bool isShown(const char* pName) { return widget<QWidget>(pName).isVisible(); }
    std::string focused() const { return QApplication::focusWidget()->objectName().toStdString(); }
    static void doubleClick(QWidget& button) {
        QTest::mouseClick(&button, Qt::LeftButton);
        const QPointF place = button.rect().center();
        QMouseEvent second(QEvent::MouseButtonDblClick, place, button.mapToGlobal(place), Qt::LeftButton,
                           Qt::LeftButton, {});
        QApplication::sendEvent(&button, &second);
        QTest::mouseRelease(&button, Qt::LeftButton);
    }
};

// A form that stays when it has served, that can't be brought back, or that hides what to fill in.
TEST_F(PanelFixture, FieldsFoldWhileConnected) {
    const auto expectFolded = [this](bool bFolded, bool bConnected) {
        for (const char* const pName : {"labelServer", "textFieldLyncServerName", "labelUser",
                                        "textFieldUsername", "labelPassword", "textFieldPassword"})
            EXPECT_EQ(isShown(pName), !bFolded) << pName;
        EXPECT_EQ(isShown("labelSignedIn"), bFolded);
        EXPECT_EQ(isShown("buttonFold"), bConnected);
        EXPECT_TRUE(isShown("buttonConnect"));
    };
    expectFolded(false, false);
    connectByHand();
    expectFolded(true, true);
    EXPECT_EQ(widget<QLabel>("labelSignedIn").accessibleName(), "Signed in as CORP\\pat on lync.example");
    EXPECT_EQ(focused(), "textFieldLyncStatus"); // it was in a field, and must not be on Disconnect
    click("buttonFold");
    expectFolded(false, true);
    EXPECT_EQ(focused(), "textFieldLyncServerName");
    EXPECT_EQ(widget<QWidget>("buttonFold").accessibleName(), "Hide the sign-in");
    type(
        "textFieldUsername",
        " of a department that has a long name, in a far away place@example"); // counts with the next sign-in
    const int nWidth = window.width();
    click("buttonFold");
    expectFolded(true, true);
    EXPECT_EQ(widget<QLabel>("labelSignedIn").accessibleName(), "Signed in as CORP\\pat on lync.example");
    EXPECT_EQ(widget<QWidget>("buttonFold").accessibleName(), "Change the sign-in");
    click("buttonFold");
    click("buttonConnect");
    expectFolded(false, false);
    click("buttonConnect");
    runUntilConnectShows("Disconnect");
    expectFolded(true, true);
    EXPECT_EQ(window.width(), nWidth); // the line wraps
    click("buttonSelectManualMode");
    expectFolded(false, false);
    journal.clear();
}

// Two sign-ins of one double click, or a connection left and taken up again by one.
TEST_F(PanelFixture, ADoubleClickCountsOnce) {
    scriptServer(R"({"availability":"Busy"})");
    ProgramFixture::type("lync.example", "CORP\\pat", "secret");
    auto& button = widget<QPushButton>("buttonConnect");
    doubleClick(button);
    QTest::mouseClick(&button, Qt::LeftButton); // before anything shows that it has begun
    QTest::keyClick(&widget<QLineEdit>("textFieldPassword"), Qt::Key_Return);
    runUntilConnectShows("Disconnect");
    runPending();
    EXPECT_EQ(journal.take({"request"}).size(), 4U);
    doubleClick(button);
    EXPECT_EQ(button.text().remove('&'), "Connect");
    EXPECT_EQ(ui().signIn().get().result, vellux::SignInStatus::Result::None);
    click("buttonConnect"); // a press of its own counts
    runUntilConnectShows("Disconnect");
    EXPECT_EQ(journal.take({"request"}).size(), 4U);
}

// A window whose first key press acts, or that doesn't lead to what is missing; a field in which Enter does
// nothing, or connects behind a disabled button.
TEST_F(PanelFixture, FocusBeginsWhereTheUserDoes) {
    const auto reopened = [this] {
        window.orderOut();
        widget<QWidget>("buttonExit").setFocus();
        window.makeKeyAndOrderFront();
        QApplication::setActiveWindow(&window);
        return focused();
    };
    int nAlerts = 0;
    onAlert([&](QMessageBox&) { ++nAlerts; });
    const char* const fields[] = {"textFieldLyncServerName", "textFieldUsername", "textFieldPassword"};
    for (const char* const pField : fields) {
        EXPECT_EQ(reopened(), pField);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return); // asks for it
        QApplication::setActiveWindow(&window);
        EXPECT_EQ(focused(), pField);
        type(pField, "lync.example");
    }
    ui().buttonConnect()->setEnabled(false);
    widget<QLineEdit>("textFieldPassword").clear();
    QTest::keyClick(&widget<QLineEdit>("textFieldPassword"), Qt::Key_Return);
    EXPECT_EQ(nAlerts, 3);
    type("textFieldPassword", "secret");
    ui().buttonConnect()->setEnabled(true);
    EXPECT_EQ(reopened(), "buttonConnect");
    click("buttonSelectManualMode");
    EXPECT_EQ(reopened(), "textFieldLyncStatus");
    click("buttonSelectSyncMode");
    scriptServer(R"({"availability":"Busy"})");
    click("buttonConnect");
    runUntilConnectShows("Disconnect");
    EXPECT_EQ(reopened(), "textFieldLyncStatus");
    EXPECT_TRUE(widget<QWidget>("labelStatus").isEnabled());
    click("buttonSelectManualMode");
    EXPECT_FALSE(widget<QWidget>("labelStatus").isEnabled()); // as its field has nothing to say
    journal.clear();
}

} // namespace
