// The windows themselves: closing, coming back, About, keys.
#include "AboutDialog.h"
#include "WindowFixture.h"
#include "fakes/ServerTexts.h"

#include <QAbstractItemView>
#include <QWindow>

namespace {

class MainWindowFixture : public WindowFixture {
protected:
    static QWidget* aboutWindow() {
        for (QWidget* const pWidget : QApplication::topLevelWidgets())
            if (pWidget->objectName() == "AboutDialog" && pWidget->isVisible())
                return pWidget;
        return nullptr;
    }
};

// A window that can't be closed, or not brought back; a light that stops following with it; a log-out held
// up.
TEST_F(MainWindowFixture, ClosingHidesAndReopeningShows) {
    plugInFramed();
    connectByHand();
    for (const bool bEscape : {false, true}) {
        if (bEscape)
            QTest::keyClick(&window, Qt::Key_Escape);
        else
            EXPECT_TRUE(window.close());
        EXPECT_FALSE(window.isVisible());
        scriptPresence(bEscape ? R"({"availability":"Away"})" : R"({"availability":"Online"})");
        journal.clear();
        transport.lastPoll().simulateData(batch("/n"));
        EXPECT_EQ(journal.take({"report"}),
                  Lines{bEscape ? "report 55534243004002cf" : "report 55534243004002df"});
        EXPECT_EQ(journal.take({"request"}).size(), 1U);
        delegate().applicationShouldHandleReopen(false);
        EXPECT_TRUE(window.isVisible());
        QApplication::setActiveWindow(&window); // the screen in memory does so once only
        EXPECT_EQ(widget<QLineEdit>("textFieldLyncStatus").text(), bEscape ? "Away" : "Online");
    }
    window.showMinimized();
    delegate().applicationShouldHandleReopen(true);
    EXPECT_FALSE(window.isMinimized());
    EXPECT_EQ(window.windowTitle(), "Vellux");
    EXPECT_EQ(journal.count("ended"), 0U);
}

// About windows that pile up, lie under others, fall behind the main window, block the window behind them, or
// stay.
TEST_F(MainWindowFixture, AboutFloatsAndCloses) {
    for (int n = 0; n < 3; ++n) {
        click("buttonAbout");
        QWidget* const pAbout = aboutWindow();
        ASSERT_NE(pAbout, nullptr);
        EXPECT_TRUE(pAbout->windowFlags().testFlag(Qt::WindowStaysOnTopHint));
        EXPECT_EQ(pAbout->windowHandle()->transientParent(), window.windowHandle());
        EXPECT_EQ(pAbout->windowModality(), Qt::NonModal);
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
        EXPECT_TRUE(
            pAbout->findChild<QLabel*>("labelVersion")->text().contains(QRegularExpression("\\d\\.\\d")));
        EXPECT_EQ(pAbout->findChild<QWidget*>("emblem")->accessibleDescription(), "Green");
        if (n == 0)
            continue; // opened again while one is open
        QApplication::setActiveWindow(pAbout);
        if (n == 1)
            QTest::keyClick(pAbout, Qt::Key_Escape);
        else
            pAbout->close();
        EXPECT_EQ(aboutWindow(), nullptr);
    }
    click("buttonAbout");
    QTest::keyClick(aboutWindow(), Qt::Key_Q, Qt::ControlModifier);
    EXPECT_EQ(journal.take({"ended"}), Lines{"ended"});
    AboutDialog controller;
    vellux::assertMainThread();
    EXPECT_EQ(qtDesktop.loadWindow("Other", controller), nullptr);
}

// A key that the main window alone knows; an Escape that closes a list and the window with it.
TEST_F(MainWindowFixture, KeysOfEveryWindow) {
    const auto press = [](QWidget& shown, Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(shown.window()->windowHandle(), key, modifiers);
    };
    click("buttonSelectManualMode");
    auto& list = widget<QComboBox>("manualModeColorList");
    list.setFocus();
    list.showPopup();
    press(*list.view(), Qt::Key_Escape);
    EXPECT_FALSE(list.view()->isVisible());
    EXPECT_TRUE(window.isVisible());
    list.showPopup();
    press(*list.view(), Qt::Key_Q, Qt::ControlModifier);
    list.hidePopup();
    EXPECT_EQ(journal.take({"ended"}), Lines{"ended"});
    press(window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

// A press on "Web site" that nothing comes of, without a word.
TEST_F(MainWindowFixture, SaysWhatCouldNotBeOpened) {
    vellux::assertMainThread();
    const auto& notice = widget<QLabel>("labelNotice");
    EXPECT_FALSE(notice.isVisible());
    const struct {
        const char *pUrl, *pNotice;
    } rows[] = {
        {"file:///nowhere/manual", "There is no /nowhere/manual on this computer."},
        {"https://vellux.example/", "No program could be found that opens https://vellux.example/."},
    };
    for (const auto& [pUrl, pNotice] : rows) {
        qtDesktop.openUrl(pUrl);
        EXPECT_EQ(textOf("labelNotice").remove(QChar(0x200b)), pNotice);
        EXPECT_TRUE(notice.isVisible());
    }
    window.orderOut();
    window.makeKeyAndOrderFront();
    EXPECT_FALSE(notice.isVisible());
}

} // namespace
