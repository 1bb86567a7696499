// Lists tied to their models.
#pragma once

#include "adapters/qt/ControlBinding.h"

#include <QComboBox>

namespace vellux {

/// A list to choose from. Every choice of the user counts, even of the entry that is already selected.
class ComboBoxBinding : public ControlBinding {
public:
    /// What the user's choice does, after the model has it.
    using Action = std::function<void(ComboBox&)>;

    ComboBoxBinding(MainThread& mainThread, QComboBox& widget, std::shared_ptr<ComboBox> model,
                    Action action);

private:
    void showContent() override;

    QComboBox& m_widget;
    const std::shared_ptr<ComboBox> m_model;
    const Action m_action;
    std::vector<std::string> m_items; // as shown
};

} // namespace vellux
