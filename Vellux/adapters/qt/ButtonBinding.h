// Buttons, check boxes and radio buttons, tied to their models.
#pragma once

#include "adapters/qt/ControlBinding.h"

#include <QAbstractButton>

namespace vellux {

/// A button of any kind. Its text is the form's unless the model has a title; its mnemonic is always the
/// form's.
class ButtonBinding : public ControlBinding {
public:
    /// What the user's press does, after the model has the new state.
    using Action = std::function<void(Button&)>;

    /// Shows the model at once. The widget outlives the binding.
    ButtonBinding(MainThread& mainThread, QAbstractButton& widget, std::shared_ptr<Button> model,
                  Action action);

private:
    void showContent() override;
    void showState();
    /// The user's press: a check box is then on or off, a radio button on. One on a radio button that is on
    /// already is no action.
    void press();
    bool isRadioButton() const { return m_widget.autoExclusive(); }

    QAbstractButton& m_widget;
    const std::shared_ptr<Button> m_model;
    const Action m_action;
    const QString m_strMnemonic; // one letter, or ""
};

} // namespace vellux
