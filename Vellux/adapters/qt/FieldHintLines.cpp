#include "adapters/qt/FieldHintLines.h"

#include "VelluxWindowUi/VelluxWindowUi.h"
#include "adapters/qt/PlaceholderLineEdit.h"
#include "app/FieldHints.h"
#include "model/ConnectTitle.h"
#include "ui_MainWindow.h"

#include <QApplication>

namespace vellux {

namespace {

// What is wrong, and what helps; "" for nothing. One line each: the window is no wider than its fields.
QString hintText(FieldHint hint) {
    switch (hint) {
    case FieldHint::None:
        break;
    case FieldHint::Scheme:
        return MainWindow::tr("Only the server's name, without \"https://\".");
    case FieldHint::UserInformation:
        return MainWindow::tr("Only the server's name, without a user and \"@\".");
    case FieldHint::Path:
        return MainWindow::tr("Only the server's name, and nothing after it.");
    case FieldHint::Blank:
        return MainWindow::tr("There is a blank in the server's name.");
    case FieldHint::Semicolon:
        return MainWindow::tr("With a \";\" your sign-in can't be kept.");
    case FieldHint::NoDomain:
        return MainWindow::tr("Usually this is DOMAIN\\name or name@domain.");
    }
    return {};
}

} // namespace

FieldHintLines::FieldHintLines(const MainWindow::Dependencies& dependencies, Ui::MainWindow& form)
    : m_dependencies(dependencies), m_form(form), m_update(dependencies.mainThread, [this] { show(); }) {
    m_observation =
        m_dependencies.controller.buttonConnect()->observe([this](Control::Change) { m_update.ask(); });
    for (const QLineEdit* const pField :
         {m_form.textFieldLyncServerName, m_form.textFieldUsername, m_form.textFieldPassword})
        QObject::connect(pField, &QLineEdit::textChanged, &m_receiver, [this] { show(); });
    // Closer to its own field than to the next one.
    for (QLabel* const pLabel : {m_form.labelServerHint, m_form.labelUserHint, m_form.labelPasswordHint})
        pLabel->setContentsMargins(0, 0, 0, m_form.layoutConnection->verticalSpacing());
    QObject::connect(qApp, &QApplication::focusChanged, &m_receiver, [this] { show(); });
    show();
}

void FieldHintLines::show() {
    const auto button = m_dependencies.controller.buttonConnect();
    const bool bToConnect = button->isEnabled() && button->title() == kTitleConnect;
    const struct {
        PlaceholderLineEdit* pField;
        QLabel* pLabel;
        FieldHint (*hint)(std::string_view strText);
    } rows[] = {
        {m_form.textFieldLyncServerName, m_form.labelServerHint, serverHint},
        {m_form.textFieldUsername, m_form.labelUserHint, userHint},
        {m_form.textFieldPassword, m_form.labelPasswordHint, passwordHint},
    };
    for (const auto& row : rows) {
        FieldHint hint = bToConnect ? row.hint(row.pField->text().toStdString()) : FieldHint::None;
        // Every user name begins without a domain: nothing is said before it has been typed.
        if (hint == FieldHint::NoDomain && row.pField->hasFocus() && row.pLabel->isHidden())
            hint = FieldHint::None;
        const QString strHint = hintText(hint);
        row.pLabel->setText(strHint);
        row.pLabel->setVisible(!strHint.isEmpty());
        row.pField->setHint(strHint);
    }
}

} // namespace vellux
