#include "adapters/qt/ComboBoxBinding.h"

#include <utility>

namespace vellux {

ComboBoxBinding::ComboBoxBinding(MainThread& mainThread, QComboBox& widget, std::shared_ptr<ComboBox> model,
                                 Action action)
    : ControlBinding(mainThread, widget, model), m_widget(widget), m_model(std::move(model)),
      m_action(std::move(action)) {
    QObject::connect(&m_widget, &QComboBox::activated, receiver(), [this](int nIndex) {
        m_model->selectItemAtIndex(nIndex);
        m_action(*m_model);
    });
    begin();
}

void ComboBoxBinding::showContent() {
    std::vector<std::string> items = m_model->items();
    if (items != m_items) {
        m_items = std::move(items);
        m_widget.hidePopup(); // its entries no longer exist
        m_widget.clear();
        for (const std::string& strItem : m_items)
            m_widget.addItem(QString::fromStdString(strItem));
    }
    m_widget.setCurrentIndex(static_cast<int>(m_model->indexOfSelectedItem()));
}

} // namespace vellux
