// Lists tied to their models.
#pragma once

#include "adapters/qt/ChoiceList.h"
#include "adapters/qt/ControlBinding.h"

#include <QIcon>
#include <QString>

namespace vellux {

/// A list to choose from. Every choice of the user counts, even of the entry that is already selected. While
/// nothing is selected it shows the entry that was selected last, which stays in force over a refill.
class ComboBoxBinding : public ControlBinding {
public:
    /// What the user's choice does, after the model has it.
    using Action = std::function<void(ComboBox&)>;
    /// How an entry is shown.
    struct Entry {
        QString strText;
        QIcon icon;
    };
    /// Asked once per refill. Empty for the model's words alone.
    using Look = std::function<Entry(std::int32_t nIndex, const std::string& strItem)>;

    ComboBoxBinding(MainThread& mainThread, ChoiceList& widget, std::shared_ptr<ComboBox> model,
                    Action action, Look look = {});

private:
    void showContent() override;

    ChoiceList& m_widget;
    const std::shared_ptr<ComboBox> m_model;
    const Action m_action;
    const Look m_look;
    std::vector<std::string> m_items; // as shown
    int m_nInForce = -1;              // position that was selected last; -1 for none
};

} // namespace vellux
