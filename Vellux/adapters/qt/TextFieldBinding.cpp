#include "adapters/qt/TextFieldBinding.h"

#include "adapters/qt/PlaceholderLineEdit.h"

#include <utility>

namespace vellux {

TextFieldBinding::TextFieldBinding(MainThread& mainThread, QLineEdit& widget,
                                   std::shared_ptr<TextField> model)
    : ControlBinding(mainThread, widget, model), m_widget(widget),
      m_pPlaceholder(qobject_cast<PlaceholderLineEdit*>(&widget)), m_model(std::move(model)) {
    // Not textEdited, which is not emitted for what assistive technology enters. No action depends on it.
    QObject::connect(&m_widget, &QLineEdit::textChanged, receiver(), [this](const QString& strText) {
        if (!isShowing())
            m_model->setText(strText.toStdString());
    });
    begin();
}

void TextFieldBinding::showContent() {
    if (m_pPlaceholder != nullptr)
        m_pPlaceholder->setPlaceholder(m_model->placeholder());
    const QString strText = QString::fromStdString(m_model->text());
    if (m_widget.text() == strText)
        return;
    const int nCursor = m_widget.cursorPosition();
    m_widget.setText(strText);
    m_widget.setCursorPosition(m_widget.isReadOnly() ? 0 : nCursor);
}

} // namespace vellux
