#include "adapters/qt/ButtonBinding.h"

#include "adapters/qt/Words.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QKeySequence>

#include <utility>

namespace vellux {

namespace {

// The letter after the "&" in a form's text.
QString mnemonicOf(const QString& strText) {
    const qsizetype nMark = strText.indexOf(QLatin1Char('&'));
    return nMark < 0 ? QString() : strText.mid(nMark + 1, 1);
}

// A title with its mnemonic marked where the letter occurs, and every other "&" shown literally.
QString marked(const QString& strText, const QString& strMnemonic) {
    const qsizetype nLetter =
        strMnemonic.isEmpty() ? -1 : strText.indexOf(strMnemonic, 0, Qt::CaseInsensitive);
    const QString strHead = strText.left(qMax<qsizetype>(nLetter, 0));
    const QString strTail = strText.mid(strHead.size());
    const auto literal = [](QString strPart) {
        return strPart.replace(QLatin1String("&"), QLatin1String("&&"));
    };
    return literal(strHead) + (nLetter < 0 ? QString() : QStringLiteral("&")) + literal(strTail);
}

} // namespace

ButtonBinding::ButtonBinding(MainThread& mainThread, QAbstractButton& widget, std::shared_ptr<Button> model,
                             Action action)
    : ControlBinding(mainThread, widget, model), m_widget(widget), m_model(std::move(model)),
      m_action(std::move(action)), m_strMnemonic(mnemonicOf(widget.text())) {
    QObject::connect(&m_widget, &QAbstractButton::clicked, receiver(), [this] { press(); });
    // Assistive technology toggles a box without clicking it. After a click the model already agrees.
    const auto takeOver = [this] {
        const bool bChecked = m_widget.isChecked();
        if (bChecked != (m_model->state() != Button::kOff) && (bChecked || !isRadioButton()))
            press();
    };
    const auto toggled = [this, takeOver] {
        if (!isShowing())
            QMetaObject::invokeMethod(receiver(), takeOver, Qt::QueuedConnection);
    };
    QObject::connect(&m_widget, &QAbstractButton::toggled, receiver(), toggled);
    begin();
}

void ButtonBinding::press() {
    if (isRadioButton() && m_model->state() == Button::kOn)
        return; // changes nothing, but its action would drop a connection or a call's flash
    if (m_widget.isCheckable())
        m_model->setState(m_widget.isChecked() || isRadioButton() ? Button::kOn : Button::kOff);
    m_action(*m_model);
}

void ButtonBinding::showContent() {
    if (const std::string strTitle = m_model->title(); !strTitle.empty()) {
        const QString strText = marked(shownWord(strTitle), m_strMnemonic);
        if (m_widget.text() != strText)
            m_widget.setText(strText);
    }
    if (m_widget.isCheckable())
        showState();
}

void ButtonBinding::showState() {
    const std::int64_t nState = m_model->state();
    if (auto* const pBox = qobject_cast<QCheckBox*>(&m_widget)) {
        pBox->setTristate(nState == Button::kMixed); // else a user's clicks would pass through "mixed"
        pBox->setCheckState(nState == Button::kMixed ? Qt::PartiallyChecked
                            : nState == Button::kOff ? Qt::Unchecked
                                                     : Qt::Checked);
        return;
    }
    // An exclusive group never unchecks its checked button; here the models decide.
    QButtonGroup* const pGroup = m_widget.group();
    if (pGroup != nullptr)
        pGroup->setExclusive(false);
    m_widget.setChecked(nState == Button::kOn);
    if (isRadioButton()) // the tab key goes to the chosen one alone, from the start
        m_widget.setFocusPolicy(nState == Button::kOn ? Qt::StrongFocus : Qt::ClickFocus);
    if (pGroup != nullptr)
        pGroup->setExclusive(true);
}

} // namespace vellux
