// Text fields tied to their models: those for entries, and the status line.
#pragma once

#include "adapters/qt/ControlBinding.h"

#include <QLineEdit>

namespace vellux {

class PlaceholderLineEdit;

/// A line of text. The user's changes are in the model at once, so that no refresh restores older text.
class TextFieldBinding : public ControlBinding {
public:
    /// Shows the model at once. The widget outlives the binding.
    TextFieldBinding(MainThread& mainThread, QLineEdit& widget, std::shared_ptr<TextField> model);

private:
    void showContent() override;

    QLineEdit& m_widget;
    PlaceholderLineEdit* const m_pPlaceholder; // the widget, if it can show a placeholder; else null
    const std::shared_ptr<TextField> m_model;
};

} // namespace vellux
