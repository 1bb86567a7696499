// What a person sees, reaches by keys, or hears read out.
#include "WindowFixture.h"

#include <QAccessible>
#include <QKeySequence>
#include <QSet>

namespace {

class LooksFixture : public WindowFixture {
protected:
    /// The strongest contrast, in steps of grey, between the ground in the middle of an empty field and what
    /// is painted on it.
    int contrastIn(const char* pField) {
        const QImage image = widget<QWidget>(pField).grab().toImage();
        const int nEdge = image.height() / 8;
        const int nGround = qGray(image.pixel(image.width() - 2 * nEdge, image.height() / 2));
        int nMost = 0;
        for (int y = nEdge; y < image.height() - nEdge; ++y)
            for (int x = nEdge; x < image.width() / 2; ++x)
                nMost = std::max(nMost, std::abs(qGray(image.pixel(x, y)) - nGround));
        return nMost;
    }
};

// An example that nobody can read on a dark ground, that hides in a small field, or stays under a typed text.
TEST_F(LooksFixture, PlaceholdersCanBeReadOnLightAndDark) {
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
    }
    QTest::keyClick(&widget<QLineEdit>("textFieldUsername"), Qt::Key_Space);
    widget<QWidget>("labelUser").setFocus();
    widget<QLineEdit>("textFieldUsername").clearFocus();
    EXPECT_LT(contrastIn("textFieldUsername"), 10);
}

// A field that a screen reader can't name, or that no key leads to; two fields on one key; a caret that waits
// for someone to type when nobody does.
TEST_F(LooksFixture, EveryFieldHasNameKeyAndPlace) {
    const QString strOrder =
        "buttonSelectSyncMode textFieldLyncServerName textFieldUsername textFieldPassword "
        "buttonConnect textFieldLyncStatus buttonFlashOnCall syncModeColorList "
        "syncModeFlashSpeedList buttonLightOffOnAway buttonLightOffOnAvailable buttonAbout "
        "buttonWebSite buttonExit";
    EXPECT_TRUE(widget<QWidget>("buttonSelectSyncMode").hasFocus());
    click("buttonFlashOnCall");
    widget<QWidget>("buttonSelectSyncMode").setFocus();
    for (const QString& strName : strOrder.split(' ')) {
        EXPECT_EQ(QApplication::focusWidget()->objectName(), strName);
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QMap<QWidget*, QString> labels;
    QSet<QString> mnemonics;
    const auto take = [&](const QString& strText, const QString& strName) {
        const QString strKey = QKeySequence::mnemonic(strText).toString();
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
        take(pButton != nullptr ? pButton->text() : labels.value(pWidget), pWidget->objectName());
        const QAccessibleInterface* const pInterface = QAccessible::queryAccessibleInterface(pWidget);
        EXPECT_FALSE(pInterface->text(QAccessible::Name).isEmpty()) << pWidget->objectName().toStdString();
    }
    EXPECT_GE(mnemonics.size(), 20);
}

// Words cut off by a larger font or a longer language.
TEST_F(LooksFixture, NothingIsCutOffWhenWordsGrow) {
    QFont font = QApplication::font();
    font.setPointSizeF(font.pointSizeF() * 2);
    QApplication::setFont(font);
    for (QLabel* const pLabel : window.findChildren<QLabel*>())
        pLabel->setText(pLabel->text() + " and so on");
    runUntil([this] { return window.size() == window.size().expandedTo(window.minimumSizeHint()); },
             "the layout");
    for (const QWidget* const pWidget : window.findChildren<QWidget*>())
        if (pWidget->isVisible() && !pWidget->objectName().isEmpty() &&
            !pWidget->objectName().startsWith("qt_")) {
            EXPECT_GE(pWidget->width(), pWidget->minimumSizeHint().width())
                << pWidget->objectName().toStdString();
            EXPECT_GE(pWidget->height(), pWidget->minimumSizeHint().height())
                << pWidget->objectName().toStdString();
        }
}

} // namespace
