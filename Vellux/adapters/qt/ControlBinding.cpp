#include "adapters/qt/ControlBinding.h"

#include <QLabel>

#include <utility>

namespace vellux {

ControlBinding::ControlBinding(MainThread& mainThread, QWidget& widget, std::shared_ptr<Control> model)
    : m_widget(widget), m_model(std::move(model)), m_update(mainThread, [this] { show(); }) {
    for (QLabel* const pLabel : widget.window()->findChildren<QLabel*>())
        if (pLabel->buddy() == &widget)
            m_pLabel = pLabel;
}

void ControlBinding::begin() {
    m_observation = m_model->observe([this](Control::Change) { m_update.ask(); });
    show();
}

void ControlBinding::show() {
    const bool bWasShowing = std::exchange(m_bShowing, true);
    showEnabled();
    showContent();
    m_bShowing = bWasShowing;
}

// A button that is disabled while it works passes the focus on, and takes it back when it is enabled again,
// unless the user has moved it meanwhile.
void ControlBinding::showEnabled() {
    const bool bEnabled = m_model->isEnabled();
    if (m_widget.isEnabledTo(m_widget.parentWidget()) == bEnabled)
        return;
    const QWidget* const pWindow = m_widget.window();
    const bool bHadFocus = pWindow->focusWidget() == &m_widget;
    m_widget.setEnabled(bEnabled);
    if (m_pLabel != nullptr)
        m_pLabel->setEnabled(bEnabled);
    if (!bEnabled) {
        m_focusHeir = bHadFocus ? pWindow->focusWidget() : nullptr;
    } else if (m_focusHeir != nullptr) {
        if (pWindow->focusWidget() == m_focusHeir)
            m_widget.setFocus();
        m_focusHeir = nullptr;
    }
}

} // namespace vellux
