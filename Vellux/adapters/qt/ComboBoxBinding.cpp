#include "adapters/qt/ComboBoxBinding.h"

#include "adapters/qt/Words.h"

#include <utility>

namespace vellux {

ComboBoxBinding::ComboBoxBinding(MainThread& mainThread, ChoiceList& widget, std::shared_ptr<ComboBox> model,
                                 Action action, Look look)
    : ControlBinding(mainThread, widget, model), m_widget(widget), m_model(std::move(model)),
      m_action(std::move(action)), m_look(std::move(look)) {
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
        for (const std::string& strItem : m_items) {
            const Entry entry =
                m_look ? m_look(m_widget.count(), strItem) : Entry{shownWord(strItem), QIcon()};
            m_widget.addItem(entry.icon, entry.strText);
        }
    }
    const int nSelected = static_cast<int>(m_model->indexOfSelectedItem());
    if (nSelected >= 0)
        m_nInForce = nSelected;
    m_widget.setCurrentIndex(nSelected);
    m_widget.setInForce(m_widget.itemText(m_nInForce), m_widget.itemIcon(m_nInForce));
}

} // namespace vellux
