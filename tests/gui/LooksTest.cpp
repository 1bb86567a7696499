// What a person sees, reaches by keys, or hears read out.
#include "WindowFixture.h"
#include "adapters/qt/DetailsWindow.h"
#include "adapters/qt/MorePage.h"

#include <QKeySequence>
#include <QRegularExpression>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSet>
#include <QTranslator>
#include <QTreeWidget>

namespace {

class LooksFixture : public WindowFixture {
protected:
    /// The strongest contrast, in steps of grey, between the ground of an empty field, right of its middle,
    /// and what is painted on its left half.
    int contrastIn(const char* pField) {
        const QImage image = widget<QWidget>(pField).grab().toImage();
        const int nEdge = image.height() / 8;
        const int nGround = qGray(image.pixel(image.width() * 3 / 5, image.height() / 2));
        int nMost = 0;
        for (int y = nEdge; y < image.height() - nEdge; ++y)
            for (int x = nEdge; x < image.width() / 2; ++x)
                nMost = std::max(nMost, std::abs(qGray(image.pixel(x, y)) - nGround));
        return nMost;
    }
};

// An example, or a choice in force, that nobody can read on a dark ground; an example that hides in a small
// field, or stays under a typed text.
TEST_F(LooksFixture, PlaceholdersCanBeReadOnLightAndDark) {
    click("buttonSelectManualMode");
    ui().manualModeFlashSpeedList()->selectItemAtIndex(-1);
    EXPECT_EQ(readOut("manualModeFlashSpeedList", QAccessible::Description), "In force: Medium");
    QPalette dark(QColor(53, 53, 53));
    dark.setColor(QPalette::Base, QColor(35, 35, 35));
    for (const bool bDark : {false, true}) {
        if (bDark)
            window.setPalette(dark);
        ASSERT_EQ(widget<QWidget>("textFieldUsername").palette().color(QPalette::Base).lightness() < 128,
                  bDark);
        for (const char* const pField : {"textFieldLyncServerName", "textFieldUsername"}) {
            EXPECT_GT(contrastIn(pField), 80) << pField << bDark;
            QFont font("Helvetica");
            font.setPointSize(13);
            EXPECT_GE(widget<QWidget>(pField).height(), QFontMetrics(font).height());
        }
        EXPECT_LT(contrastIn("textFieldPassword"), 10);
        EXPECT_GT(contrastIn("manualModeFlashSpeedList"), 80) << bDark;
    }
    click("buttonSelectSyncMode");
    QTest::keyClick(&widget<QLineEdit>("textFieldUsername"), Qt::Key_Space);
    widget<QWidget>("labelUser").setFocus();
    widget<QLineEdit>("textFieldUsername").clearFocus();
    EXPECT_LT(contrastIn("textFieldUsername"), 10);
}

// A field that a screen reader can't name, or that no key leads to; two fields on one key; a caret that waits
// for someone to type when nobody does.
TEST_F(LooksFixture, EveryFieldHasNameKeyAndPlace) {
    const QString strOrder =
        "textFieldLyncServerName textFieldUsername textFieldPassword "
        "buttonConnect textFieldLyncStatus buttonFlashOnCall syncModeColorList "
        "syncModeFlashSpeedList buttonLightOffOnAway buttonLightOffOnAvailable buttonAbout "
        "buttonWebSite buttonMore buttonDetails buttonExit buttonSelectSyncMode";
    EXPECT_TRUE(widget<QWidget>("textFieldLyncServerName").hasFocus());
    click("buttonFlashOnCall");
    widget<QWidget>("textFieldLyncServerName").setFocus();
    for (const QString& strName : strOrder.split(' ')) {
        EXPECT_EQ(QApplication::focusWidget()->objectName(), strName);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QMap<QWidget*, QString> labels;
    QSet<QString> mnemonics;
    const auto take = [&](const QKeySequence& key, const QString& strName) {
        const QString strKey = key.toString();
        EXPECT_FALSE(strKey.isEmpty()) << strName.toStdString();
        EXPECT_FALSE(mnemonics.contains(strKey)) << strKey.toStdString() << " " << strName.toStdString();
        mnemonics.insert(strKey);
    };
    for (const QLabel* const pLabel : window.findChildren<QLabel*>())
        if (pLabel->buddy() != nullptr)
            labels[pLabel->buddy()] = pLabel->text();
    for (QWidget* const pWidget : window.findChildren<QWidget*>()) {
        if (pWidget->focusPolicy() == Qt::NoFocus || pWidget->objectName().isEmpty())
            continue;
        const auto* const pButton = qobject_cast<QAbstractButton*>(pWidget);
        take(pButton != nullptr ? pButton->shortcut() : QKeySequence::mnemonic(labels.value(pWidget)),
             pWidget->objectName());
        const QAccessibleInterface* const pInterface = QAccessible::queryAccessibleInterface(pWidget);
        EXPECT_FALSE(pInterface->text(QAccessible::Name).isEmpty()) << pWidget->objectName().toStdString();
    }
    EXPECT_GE(mnemonics.size(), 20);
}

void expectNothingCutOff(const QWidget& page) {
    for (const QWidget* const pWidget : page.findChildren<QWidget*>()) {
        if (!pWidget->isVisibleTo(&page) || pWidget->objectName().startsWith("qt_") ||
            pWidget->inherits("QHeaderView"))
            continue;
        const std::string strName =
            pWidget->metaObject()->className() + (" " + pWidget->objectName()).toStdString();
        const auto* const pLabel = qobject_cast<const QLabel*>(pWidget);
        const bool bWraps = pLabel != nullptr && pLabel->wordWrap();
        EXPECT_GE(pWidget->width(), pWidget->minimumSizeHint().width()) << strName;
        EXPECT_GE(pWidget->height(),
                  bWraps ? pLabel->heightForWidth(pLabel->width()) : pWidget->minimumSizeHint().height())
            << strName;
    }
}

// Words cut off by a larger font or a longer language.
TEST_F(LooksFixture, NothingIsCutOffWhenWordsGrow) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * 2);
    QApplication::setFont(font);
    for (QLabel* const pLabel : window.findChildren<QLabel*>())
        pLabel->setText(pLabel->text() + " and so on");
    const auto& content = widget<QWidget>("content");
    runUntil([&] { return content.size() == content.size().expandedTo(content.minimumSizeHint()); },
             "the layout");
    EXPECT_TRUE(window.screen()->availableGeometry().contains(QRect(QPoint(), window.size())));
    expectNothingCutOff(window);
}

// Fields of different heights, or a window that grows when their examples come; one that scrolls though there
// is room, that can't where there is none, or that resists the user.
TEST_F(LooksFixture, FitsItsContentAndAnyScreen) {
    const auto height = [this](const char* pName) { return widget<QWidget>(pName).height(); };
    EXPECT_EQ(height("textFieldPassword"), height("textFieldUsername"));
    EXPECT_EQ(height("textFieldPassword"), height("textFieldLyncServerName"));
    vellux::MainWindow early(dependencies({}));
    early.makeKeyAndOrderFront();
    runPending();
    EXPECT_EQ(early.findChild<QWidget*>("textFieldUsername")->height(), height("textFieldPassword"));
    EXPECT_EQ(early.size(), window.size());
    early.orderOut();
    QApplication::setActiveWindow(&window);

    const auto& bar = *widget<QScrollArea>("scrollArea").verticalScrollBar();
    EXPECT_FALSE(bar.isVisible());
    const int nWhole = window.height();
    connectByHand(); // folds the fields
    runUntil([&] { return window.height() < nWhole; }, "the folded window");
    EXPECT_FALSE(bar.isVisible());
    window.resize(300, 200);
    runUntil([&] { return bar.isVisible(); }, "the scroll bar");
    click("buttonConnect");
    runPending();
    EXPECT_EQ(window.size(), QSize(300, 200));
    window.resize(window.width(), nWhole + 50);
    click("buttonFlashOnCall");
    runPending();
    EXPECT_EQ(window.height(), nWhole + 50);
}

/// A language with longer words, and with letters that no English word has.
class PseudoLanguage : public QTranslator {
public:
    PseudoLanguage() { QApplication::installTranslator(this); }
    bool isEmpty() const override { return false; }
    QString translate(const char*, const char* strSource, const char*, int) const override {
        QString strText = QString::fromUtf8(strSource);
        strText += QString(strText.size() / 3 + 1, kMark);
        return strText.replace('a', QChar(0xE4)).replace('o', QChar(0xF6));
    }
    static constexpr QChar kMark{0xFF};
};

class PseudoFixture : protected PseudoLanguage, public LooksFixture {
protected:
    /// All that is to be read or heard on a page, but for what comes from models or from elsewhere.
    static void expectTranslated(const QWidget& page, const QSet<QString>& data) {
        const auto expect = [](const QString& strText, const QWidget* pWidget) {
            static const QRegularExpression version("\\d\\.\\d|^$");
            EXPECT_TRUE(strText.contains(kMark) || strText.contains(version))
                << pWidget->objectName().toStdString() << ": " << strText.toStdString();
        };
        for (const QWidget* const pWidget : page.findChildren<QWidget*>()) {
            if (data.contains(pWidget->objectName()))
                continue;
            for (const char* const pProperty :
                 {"text", "title", "placeholderText", "toolTip", "accessibleName", "accessibleDescription"})
                if (qobject_cast<const QLineEdit*>(pWidget) == nullptr || pProperty != std::string("text"))
                    expect(pWidget->property(pProperty).toString(), pWidget);
            if (const auto* const pTree = qobject_cast<const QTreeWidget*>(pWidget))
                for (int n = 0; n < pTree->columnCount(); ++n)
                    expect(pTree->headerItem()->text(n), pWidget);
        }
    }
};

// A word that no translation reaches; one that is cut off when it is longer than in English.
TEST_F(PseudoFixture, EveryWordCanBeTranslatedAndFits) {
    qunsetenv("XDG_CURRENT_DESKTOP");
    qunsetenv("XDG_SESSION_TYPE");
    vellux::DetailsWindow details(window,
                                  {mainThread, ui(), log, "9.9", [] { return true; },
                                   [] {
                                       return std::vector<vellux::LightNode>{{"/dev/hidraw3", 1, 2, ""}};
                                   }});
    vellux::ChoicesFile file(QString::fromStdString((directory / "file/choices").string()));
    vellux::MorePage more(
        window, {mainThread, file, {[] { return false; }, [](bool) { return "No way"; }, "/etc/a.desktop"}});
    vellux::HttpExchange exchange;
    exchange.error = {"", vellux::HttpFailure::Refused};
    log.add(exchange);
    std::filesystem::remove_all(directory / "Vellux");
    writeContent((directory / "Vellux").string(), "no directory");
    type("textFieldLyncServerName", "a/b");
    type("textFieldUsername", "pat");
    type("textFieldPassword", ";");
    onAlert([](QMessageBox&) {});
    click("buttonConnect");
    runUntil([this] { return ProgramFixture::isConnectUsable("Connect") && !textOf("labelFiles").isEmpty(); },
             "the alert");
    details.present();
    more.present();
    writeContent((directory / "file").string(), "no directory");
    for (auto* const pBox : more.findChildren<QCheckBox*>())
        pBox->click();
    runPending();
    const auto* const pList = details.findChild<QTreeWidget*>();
    EXPECT_TRUE(pList->topLevelItem(0)->text(4).contains(kMark));
    for (const QWidget* const pPage : std::initializer_list<QWidget*>{&window, &details, &more}) {
        expectTranslated(*pPage, {"textFieldRemedy"});
        expectNothingCutOff(*pPage);
    }
    journal.clear();
}

} // namespace
