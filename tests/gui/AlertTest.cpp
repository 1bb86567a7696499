// Alerts, and the end of the program while one is open.
#include "AlertPopup.h"
#include "WindowFixture.h"
#include "adapters/qt/WindowTray.h"

#include <QMenu>

namespace {

class AlertFixture : public WindowFixture {
protected:
    void check(QMessageBox& box, const char* pMessage) {
        EXPECT_EQ(box.windowModality(), Qt::ApplicationModal);
        EXPECT_EQ(box.icon(), QMessageBox::Information);
        EXPECT_TRUE(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint)); // not below an About window
        EXPECT_EQ(box.windowTitle(), "Vellux");
        EXPECT_EQ(box.text(), "Vellux");
        EXPECT_EQ(box.informativeText(), pMessage);
        for (const QLabel* const pLabel : box.findChildren<QLabel*>()) {
            EXPECT_NE(pLabel->textFormat(), Qt::AutoText); // a server's text is no markup
            if (pLabel->text() == pMessage) {              // in one line
                EXPECT_GE(pLabel->width(), pLabel->fontMetrics().horizontalAdvance(pMessage));
            }
        }
        ASSERT_EQ(box.buttons().size(), 1);
        EXPECT_EQ(box.buttons().front()->text(), "OK");
    }
};

// An alert that hangs the main thread, or hangs on a window that nobody sees.
TEST_F(AlertFixture, AlertOnMainIsShownAtOnce) {
    const QWidget* pParent = &window;
    int nShown = 0;
    onAlert([&](QMessageBox& box) {
        check(box, "Please ensure all fields are entered correctly");
        EXPECT_EQ(box.parentWidget(), pParent);
        delegate().applicationShouldHandleReopen(false);
        EXPECT_TRUE(window.isVisible());
        runUntil([&box] { return box.isActiveWindow(); }, "the alert above the window that it blocks");
        ++nShown;
    });
    ui().onConnectButtonClicked(*ui().buttonConnect());
    pParent = nullptr;
    window.orderOut();
    ui().onConnectButtonClicked(*ui().buttonConnect());
    window.showMinimized();
    ui().onConnectButtonClicked(*ui().buttonConnect());
    EXPECT_EQ(nShown, 3);
}

// A tray's menu, which works beside an alert, that opens a second alert over it.
TEST_F(AlertFixture, TheTraysMenuBeginsNothingUnderAnAlert) {
    const vellux::WindowTray tray({mainThread, ui(), window, following, choices});
    QList<QAction*> actions;
    for (const QWidget* const pWidget : QApplication::topLevelWidgets())
        if (const auto* const pMenu = qobject_cast<const QMenu*>(pWidget))
            actions = pMenu->actions();
    ASSERT_EQ(actions.size(), 4); // show, connect, a line, exit
    int nShown = 0;
    onAlert([&](QMessageBox& box) {
        ++nShown;
        actions[1]->trigger();
        EXPECT_TRUE(box.isVisible());
    });
    actions[1]->trigger();
    EXPECT_EQ(nShown, 1);
    window.orderOut();
    actions[0]->trigger();
    EXPECT_TRUE(window.isVisible());
    actions[3]->trigger();
    EXPECT_EQ(journal.take({"ended"}), Lines{"ended"});
}

// An alert that can't be answered, since calls that queue calls keep the window out.
TEST_F(AlertFixture, CanBeAnsweredWhileCallsQueueCalls) {
    const std::function<void()> again = [&] { mainThread.post(again); };
    int nShown = 0;
    onAlert([&](QMessageBox&) { ++nShown; });
    mainThread.post([] { AlertPopup::sharedAlertPopup().display("Vellux", "beside the calls"); });
    again();
    runUntil([&] { return nShown == 1; }, "the alert");
    mainThread.close();
}

// A program that can't be ended while an alert is open, ends twice, or shows another alert while it ends.
TEST_F(AlertFixture, EndingClosesTheAlert) {
    onAlert([&](QMessageBox& box) {
        QTest::keyClick(&box, Qt::Key_Q, Qt::ControlModifier);
        EXPECT_FALSE(box.isVisible());
    });
    vellux::Alert alert;
    alert.buttons = {"OK"};
    vellux::assertMainThread();
    EXPECT_EQ(qtDesktop.runModal(alert), 1000);
    onAlert([](QMessageBox&) { ADD_FAILURE() << "an alert at the end"; });
    EXPECT_EQ(qtDesktop.runModal(alert), 1000);
    qtDesktop.terminate();
    EXPECT_EQ(journal.take({"ended"}), Lines{"ended"});
}

} // namespace
