#include "model/Controls.h"

namespace vellux {

void Control::setEnabled(bool bEnabled) {
    m_bEnabled.set(bEnabled);
    notify(Change::Enabled);
}

void Button::setState(std::int64_t nState) {
    m_nState.set(nState);
    notify(Change::State);
}

void Button::setTitle(std::string strTitle) {
    m_strTitle.set(std::move(strTitle));
    notify(Change::Title);
}

void TextField::setText(std::string strText) {
    m_strText.set(std::move(strText));
    notify(Change::Text);
}

void TextField::setPlaceholder(Placeholder placeholder) {
    m_placeholder.set(std::move(placeholder));
    notify(Change::Placeholder);
}

std::int64_t ComboBox::numberOfItems() const {
    return m_content.with(
        [](const Content& content) { return static_cast<std::int64_t>(content.items.size()); });
}

std::int64_t ComboBox::indexOfSelectedItem() const {
    return m_content.with([](const Content& content) { return content.nSelected; });
}

void ComboBox::removeAllItems() {
    m_content.update([](Content& content) { content = {}; });
    notify(Change::Items);
}

void ComboBox::addItems(const std::vector<std::string>& items) {
    m_content.update(
        [&](Content& content) { content.items.insert(content.items.end(), items.begin(), items.end()); });
    notify(Change::Items);
}

void ComboBox::selectItemAtIndex(std::int64_t nIndex) {
    m_content.update([nIndex](Content& content) {
        const auto nItems = static_cast<std::int64_t>(content.items.size());
        content.nSelected = nIndex >= 0 && nIndex < nItems ? nIndex : kNothing;
    });
    notify(Change::Selection);
}

} // namespace vellux
