#include "adapters/qt/ConnectionPanel.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/WindowActions.h"
#include "adapters/qt/Words.h"
#include "app/Following.h"
#include "model/ConnectTitle.h"
#include "ui_MainWindow.h"

#include <QEvent>
#include <QKeySequence>

#include <initializer_list>

namespace vellux {

namespace {

void reserveWidth(QPushButton& button, std::initializer_list<QString> titles) {
    const QString strNow = button.text();
    const QKeySequence keyNow = button.shortcut(); // a new text drops it
    int nWidth = 0;
    for (const QString& strTitle : titles) {
        button.setText(strTitle);
        nWidth = qMax(nWidth, button.sizeHint().width());
    }
    button.setText(strNow);
    button.setShortcut(keyNow);
    button.setMinimumWidth(nWidth);
}

constexpr int kConnectRow = 6; // of the form's grid

QString foldTitle(bool bFolded) {
    return bFolded ? MainWindow::tr("Change…") : MainWindow::tr("Hide");
}

} // namespace

/// Takes the second click of a double click away: at "Disconnect" it would connect again.
class ConnectionPanel::ClickFilter : public QObject {
public:
    using QObject::QObject;

protected:
    bool eventFilter(QObject*, QEvent* pEvent) override {
        return pEvent->type() == QEvent::MouseButtonDblClick;
    }
};

ConnectionPanel::ConnectionPanel(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form)
    : m_dependencies(dependencies), m_form(form), m_update(dependencies.mainThread, [this] { show(); }) {
    m_form.buttonConnect->installEventFilter(new ClickFilter(m_form.buttonConnect));
    for (const QLineEdit* const pField :
         {m_form.textFieldLyncServerName, m_form.textFieldUsername, m_form.textFieldPassword})
        QObject::connect(pField, &QLineEdit::returnPressed, &m_receiver, [this] {
            if (m_dependencies.controller.buttonConnect()->title() ==
                kTitleConnect) // never by mistake the other one
                m_form.buttonConnect->click();
        });
    QObject::connect(m_form.buttonFold, &QPushButton::clicked, &m_receiver, [this] {
        m_bUnfoldedByUser = m_bFolded;
        show();
        if (!m_bFolded)
            m_form.textFieldLyncServerName->setFocus();
    });
    // It wraps in the room that there is: a label's own idea of its width would make the window wider.
    QSizePolicy policy = m_form.labelSignedIn->sizePolicy();
    policy.setHorizontalPolicy(QSizePolicy::Ignored);
    m_form.labelSignedIn->setSizePolicy(policy);
    const auto showStatus = [this](const QString& strStatus) {
        m_form.labelStatus->setEnabled(!strStatus.isEmpty()); // which its field can't be seen to be
    };
    QObject::connect(m_form.textFieldLyncStatus, &QLineEdit::textChanged, &m_receiver, showStatus);
    showStatus(m_form.textFieldLyncStatus->text());
    m_observation =
        m_dependencies.controller.buttonConnect()->observe([this](Control::Change) { m_update.ask(); });
    fold(false);
    show();
}

void ConnectionPanel::press(Button& sender) {
    assertMainThread(m_dependencies.mainThread);
    // A sign-in that has begun disables the button, but may not have come to that.
    VelluxWindowUi& controller = m_dependencies.controller;
    if (!sender.isEnabled() || controller.signIn().get().result == SignInStatus::Result::Running)
        return;
    controller.onConnectButtonClicked(sender);
    if (QLineEdit* const pEmpty = firstEmptyField()) // an alert has asked for it
        pEmpty->setFocus();
}

QLineEdit* ConnectionPanel::firstEmptyField() const {
    for (QLineEdit* const pField :
         {m_form.textFieldLyncServerName, m_form.textFieldUsername, m_form.textFieldPassword})
        if (pField->text().isEmpty() && pField->isEnabled() && !m_bFolded)
            return pField;
    return nullptr;
}

void ConnectionPanel::placeFocus() {
    const auto button = m_dependencies.controller.buttonConnect();
    QWidget* pFocus = m_form.textFieldLyncStatus; // only to be read
    if (button->title() == kTitleConnect && m_form.buttonConnect->isEnabled()) {
        pFocus = firstEmptyField();
        if (pFocus == nullptr)
            pFocus = m_form.buttonConnect;
    }
    pFocus->setFocus();
}

void ConnectionPanel::reserveRoom() {
    reserveWidth(*m_form.buttonConnect,
                 {shownWord(kTitleConnect), shownWord(kTitleConnecting), shownWord(kTitleDisconnect)});
    reserveWidth(*m_form.buttonFold, {foldTitle(true), foldTitle(false)});
}

void ConnectionPanel::show() {
    const bool bConnected = isConnected(*m_dependencies.controller.buttonConnect());
    m_bUnfoldedByUser = m_bUnfoldedByUser && bConnected;
    m_form.buttonFold->setVisible(bConnected);
    if (const bool bFolded = bConnected && !m_bUnfoldedByUser; bFolded != m_bFolded)
        fold(bFolded);
}

void ConnectionPanel::fold(bool bFolded) {
    m_bFolded = bFolded;
    // Not what stands in the fields: that may have been changed since.
    const SignInStatus signIn = m_dependencies.following.state().get().signIn;
    const QString strSignedIn =
        MainWindow::tr("Signed in as %1 on %2")
            .arg(QString::fromStdString(signIn.strUser), QString::fromStdString(signIn.strServer));
    m_form.labelSignedIn->setText(breakable(strSignedIn));
    m_form.labelSignedIn->setAccessibleName(strSignedIn);
    m_form.labelSignedIn->setMinimumWidth(0); // else no longest word is narrower than the one before
    m_form.labelSignedIn->setMinimumWidth(m_form.labelSignedIn->minimumSizeHint().width());
    QWidget* const inputs[] = {m_form.labelServer,   m_form.textFieldLyncServerName,
                               m_form.labelUser,     m_form.textFieldUsername,
                               m_form.labelPassword, m_form.textFieldPassword};
    for (QWidget* const pInput : inputs) {
        if (bFolded && pInput->hasFocus())
            m_form.textFieldLyncStatus->setFocus(); // not on a button that acts
        pInput->setVisible(!bFolded);
    }
    m_form.labelSignedIn->setVisible(bFolded);
    // The line begins where the labels do; Connect stands below the fields.
    m_form.layoutConnection->removeItem(m_form.layoutConnect);
    m_form.layoutConnect->setParent(nullptr);
    m_form.layoutConnection->addLayout(m_form.layoutConnect, kConnectRow, bFolded ? 0 : 1, 1,
                                       bFolded ? 2 : 1);
    m_form.buttonFold->setText(foldTitle(bFolded));
    m_form.buttonFold->setShortcut(Qt::Key_F2); // all of its letters are taken
    m_form.buttonFold->setAccessibleName(bFolded ? MainWindow::tr("Change the sign-in")
                                                 : MainWindow::tr("Hide the sign-in"));
}

} // namespace vellux
