// What stands beside the controls: hints, the choices, the details.
#include "WindowFixture.h"
#include "adapters/qt/DetailsWindow.h"
#include "adapters/qt/MorePage.h"

#include <QClipboard>
#include <QTreeWidget>

#include <sys/stat.h>

namespace {

namespace fs = std::filesystem;
using vellux::Choices;
using vellux::ChoicesFile;

class PagesFixture : public WindowFixture {
protected:
    /// The visible text of a label; "" for a hidden one.
    std::string shown(const QWidget& page, const char* pLabel) {
        const auto* const pFound = page.findChild<QLabel*>(pLabel);
        return pFound != nullptr && pFound->isVisible() ? pFound->text().toStdString() : "";
    }
    std::string path(const char* strName) const { return (directory / strName).string(); }
    static QString text(const std::string& strText) { return QString::fromStdString(strText); }
};

// No hint, one that stays, one before the name is typed, or one for fields that nobody can change now.
TEST_F(PagesFixture, HintsStandBelowTheFields) {
    const auto hints = [this] {
        std::string strHints;
        for (const char* const pRow : {"Server", "User", "Password"})
            strHints += shown(window, (std::string("label") + pRow + "Hint").c_str()).substr(0, 9) + "|";
        return strHints;
    };
    EXPECT_EQ(hints(), "|||");
    type("textFieldLyncServerName", "https://lync.example");
    type("textFieldUsername", "pat");
    EXPECT_EQ(hints(), "Only the |||");
    widget<QWidget>("textFieldPassword").setFocus();
    EXPECT_EQ(hints(), "Only the |Usually t||");
    type("textFieldPassword", "a;b");
    EXPECT_EQ(hints(), "Only the |Usually t|With a \";|");
    EXPECT_TRUE(widget<QWidget>("textFieldUsername").accessibleDescription().startsWith("Usually"));
    click("buttonSelectManualMode");
    EXPECT_EQ(hints(), "|||");
    click("buttonSelectSyncMode");
    EXPECT_EQ(hints(), "Only the |Usually t|With a \";|");
    type("textFieldUsername", "@corp.example");
    EXPECT_EQ(hints(), "Only the ||With a \";|");
    EXPECT_EQ(widget<QWidget>("textFieldUsername").accessibleDescription().left(11), "For example");
    for (const char* const pField : {"textFieldLyncServerName", "textFieldUsername", "textFieldPassword"})
        widget<QLineEdit>(pField).clear();
    EXPECT_EQ(hints(), "|||");
    connectByHand();
    type("textFieldPassword", ";");
    EXPECT_EQ(hints(), "|||");
}

// Settings that are lost without a word; a word that stays when they are kept; a press that does less for it.
TEST_F(PagesFixture, SaysWhichFileCannotBeWritten) {
    EXPECT_EQ(shown(window, "labelFiles"), "");
    fs::remove(settingsPath("uistate.txt"));
    fs::create_directory(settingsPath("uistate.txt"));
    connectByHand();
    const std::string strSettings = "Your settings will not be kept. This can't be written:\n";
    const std::string strSignIn = "Your sign-in will not be kept. This can't be written:\n";
    EXPECT_EQ(shown(window, "labelFiles"), strSettings + settingsPath("uistate.txt"));
    writeContent(path("file"), "no directory");
    vellux::MainWindow another(dependencies(path("file")));
    another.show();
    EXPECT_EQ(shown(another, "labelFiles"), strSettings + path("file/Vellux/uistate.txt") + "\n" + strSignIn +
                                                path("file/Vellux/configv31.bin"));
    fs::remove(settingsPath("uistate.txt"));
    click("buttonConnect");
    runPending();
    EXPECT_EQ(shown(window, "labelFiles"), "");
    journal.clear();
}

// A broken file that ends or blocks the program, switches something on, or swallows a choice in silence.
TEST_F(PagesFixture, ChoicesSurviveAnyFile) {
    const Choices all{true, true, true};
    const std::string strGood = "[General]\nreconnect=true\nlight-off-when-not-reached=true\n";
    const struct {
        const char* strName;
        std::string strContent;
        Choices expected;
        bool bStored;
    } rows[] = {
        {"good", strGood + "told-of-missing-tray=true\n", all, true},
        {"new/er/file", "", {}, true},
        {"other-words", "[General]\nreconnect=1\nlight-off-when-not-reached=True!\n", {}, true},
        {"elsewhere", "[Other]\nreconnect=true\n", {}, true},
        {"cut-off", "[General]\nreconnect=tr", {}, true},
        {"no-group", "[General\nreconnect=true\n", {}, true},
        {"rubbish", std::string("\x89PNG\0\r\n=\xFF[;\\x\x01]=%%\n", 18), {}, true},
        {"directory", "", {}, false},
        {"fifo", "", {}, false},
        {"/proc/choices.conf", "", {}, false},
    };
    fs::create_directory(path("directory"));
    ASSERT_EQ(mkfifo(path("fifo").c_str(), 0600), 0);
    for (const auto& row : rows) {
        if (!row.strContent.empty())
            writeContent(path(row.strName), row.strContent);
        const QString strPath = text(row.strName[0] == '/' ? row.strName : path(row.strName));
        ChoicesFile file(strPath);
        EXPECT_TRUE(file.choices().get() == row.expected) << row.strName;
        EXPECT_TRUE(file.isStored()) << row.strName;
        for (const Choices& chosen : {Choices{false, true, false}, Choices{true, false, true}}) {
            file.choices().set(chosen);
            EXPECT_EQ(file.isStored(), row.bStored) << row.strName;
            EXPECT_TRUE(ChoicesFile(strPath).choices().get() == (row.bStored ? chosen : Choices{}))
                << row.strName;
        }
    }
}

// A box that does nothing, or shows what is not so; a choice that is not kept, and nobody says it.
TEST_F(PagesFixture, MoreMakesTheChoices) {
    ChoicesFile file(text(path("choices.conf")));
    bool bAutostart = true;
    std::optional<std::string> strTrouble;
    vellux::MorePage page(window, {mainThread,
                                   file,
                                   {[&] { return bAutostart; },
                                    [&](bool bOn) {
                                        if (!strTrouble)
                                            bAutostart = bOn;
                                        return strTrouble;
                                    },
                                    "/etc/a.desktop"}});
    QObject::connect(&window, &vellux::MainWindow::moreAsked, &page, &vellux::MorePage::present);
    const auto box = [&](const char* pName) { return page.findChild<QCheckBox*>(pName); };
    QCheckBox *const pReconnect = box("buttonReconnectByItself"),
                     *const pOff = box("buttonLightOffUnreached"), *const pAutostart = box("buttonAutostart");
    const auto states = [&] {
        std::string strStates;
        for (const QCheckBox* const pBox : {pReconnect, pOff, pAutostart})
            strStates += pBox->isChecked() ? "x" : "-";
        return strStates;
    };
    click("buttonMore");
    EXPECT_TRUE(page.isVisible() && !page.isModal());
    EXPECT_EQ(states(), "--x");
    pReconnect->click();
    pOff->click();
    EXPECT_TRUE((file.choices().get() == Choices{true, true, false}));
    pReconnect->click();
    EXPECT_TRUE((ChoicesFile(file.path()).choices().get() == Choices{false, true, false}));
    onWorker([&] { file.choices().update([](Choices& chosen) { chosen.bReconnect = true; }); });
    pAutostart->click();
    EXPECT_EQ(states(), "xx-");
    EXPECT_FALSE(bAutostart);

    strTrouble = "Permission denied";
    pAutostart->click();
    EXPECT_EQ(states(), "xx-");
    EXPECT_EQ(shown(page, "labelAutostartTrouble"), "/etc/a.desktop can't be written: Permission denied.");
    EXPECT_TRUE(pAutostart->accessibleDescription().contains("/etc/a.desktop"));
    fs::remove(path("choices.conf"));
    fs::create_directory(path("choices.conf"));
    EXPECT_EQ(shown(page, "labelChoicesTrouble"), "");
    pOff->click();
    EXPECT_EQ(states(), "x--");
    EXPECT_EQ(shown(page, "labelChoicesTrouble"),
              "This holds until Vellux ends: " + path("choices.conf") + " can't be written.");

    QTest::keyClick(&page, Qt::Key_Escape);
    EXPECT_FALSE(page.isVisible());
    bAutostart = true; // in the desktop's own list
    click("buttonMore");
    EXPECT_EQ(states(), "x-x");
    EXPECT_EQ(shown(page, "labelAutostartTrouble"), "");
}

// Details that miss what is so, stand still, block the window, or can't be copied; memory that grows with
// each exchange.
TEST_F(PagesFixture, DetailsShowTheLatestExchanges) {
    bool bTray = false;
    vellux::DetailsWindow details(window, {mainThread, ui(), log, "9.9.9, TLS/1", [&] { return bTray; },
                                           [] {
                                               return std::vector<vellux::LightNode>{
                                                   {"/dev/hidraw3", 0x1130, 0x1, ""},
                                                   {"/dev/hidraw4", 0x2c0d, 0x6, "No way"}};
                                           }});
    QObject::connect(&window, &vellux::MainWindow::detailsAsked, &details, &vellux::DetailsWindow::present);
    vellux::HttpExchange exchange;
    exchange.strMethod = "GET";
    exchange.strHost = "lync.example";
    exchange.strPath = "/a";
    exchange.nStatus = 401;
    exchange.duration = std::chrono::milliseconds(12);
    exchange.authenticationSchemes = {"Negotiate", "NTLM"};
    log.add(exchange);
    QTest::keyClick(&window, Qt::Key_F12);
    runUntil([&] { return details.isVisible(); }, "the details");
    EXPECT_FALSE(details.isModal());
    EXPECT_EQ(details.parentWidget(), &window);
    const auto& list = *details.findChild<QTreeWidget*>("listExchanges");
    const auto row = [&](int nRow) {
        QStringList cells;
        for (int nColumn = 1; nColumn < list.columnCount(); ++nColumn)
            cells.append(list.topLevelItem(nRow)->text(nColumn));
        return cells.join('|').toStdString();
    };
    EXPECT_EQ(row(0), "GET lync.example/a|401|12|asks for Negotiate, NTLM");
    exchange = {};
    exchange.strMethod = "POST";
    exchange.error = {"words", vellux::HttpFailure::CertificateUntrusted, "Example CA"};
    onWorker([&] {
        log.add(exchange);
        log.add(exchange);
    });
    ASSERT_EQ(list.topLevelItemCount(), 2);
    EXPECT_EQ(row(1), "POST ||0|certificate not trusted (issuer: Example CA): words; 2 times");
    for (int n = 0; n < 200; ++n) {
        exchange.strPath = "/" + std::to_string(n);
        log.add(exchange);
    }
    EXPECT_EQ(list.topLevelItemCount(), 100);
    EXPECT_EQ(row(99).substr(0, 10), "POST /199|");

    bTray = true;
    details.findChild<QPushButton*>("buttonCopyDetails")->click();
    const std::string strText = QGuiApplication::clipboard()->text().toStdString();
    for (const std::string& strPart : std::initializer_list<std::string>{
             "libcurl: 9.9.9, TLS/1\n", std::string("Qt: ") + qVersion() + "\n", "Tray: there\n",
             "shown through offscreen\n",
             "Lights: 1130:0001 (/dev/hidraw3): may be opened, "
             "2c0d:0006 (/dev/hidraw4): can't be opened (No way)\n",
             "\n\n" + log.text()})
        EXPECT_NE(strText.find(strPart), std::string::npos) << strPart << "\nin\n" << strText;
    QTest::keyClick(&details, Qt::Key_Escape);
    EXPECT_FALSE(details.isVisible());
    EXPECT_TRUE(window.isVisible());
}

} // namespace
