// The window's controls as plain models: what they hold, free of any toolkit. A view binds to them.
#pragma once

#include "threads/Observers.h"
#include "threads/Shared.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vellux {

/// What every control has. Any thread reads and writes a control; each value stands behind a small lock of
/// its own. Writing never fires an action: actions come from the user alone, through the view, which first
/// writes the new state here and then calls the controller's operation.
class Control {
public:
    enum class Change { Enabled, State, Title, Text, Placeholder, Items, Selection };
    using Observer = Observers<Change>::Observer;

    explicit Control(bool bEnabled = true) : m_bEnabled(bEnabled) {}
    virtual ~Control() = default;

    /// Whether a user can use it.
    bool isEnabled() const { return m_bEnabled.get(); }
    void setEnabled(bool bEnabled);

    /// Calls the observer after every write, when the new value can be read, on the writing thread and with
    /// no lock held. Any thread. What the observer refers to must live until every worker thread has ended.
    [[nodiscard]] Observation observe(Observer observer) { return m_observers.add(std::move(observer)); }

protected:
    void notify(Change change) const { m_observers.notify(change); }

private:
    Shared<bool> m_bEnabled;
    Observers<Change> m_observers;
};

/// A push button, check box or radio button.
class Button : public Control {
public:
    explicit Button(std::string strTitle = {}, std::int64_t nState = kOff, bool bEnabled = true)
        : Control(bEnabled), m_strTitle(std::move(strTitle)), m_nState(nState) {}

    static constexpr std::int64_t kOff = 0;
    static constexpr std::int64_t kOn = 1;
    static constexpr std::int64_t kMixed = -1;

    /// kOn, kOff or kMixed; without meaning for a push button.
    std::int64_t state() const { return m_nState.get(); }
    void setState(std::int64_t nState);

    /// Its text.
    std::string title() const { return m_strTitle.get(); }
    void setTitle(std::string strTitle);

private:
    Shared<std::string> m_strTitle;
    Shared<std::int64_t> m_nState;
};

/// The text that an empty field shows, with its looks. Components from 0.0 to 1.0 in device RGB.
struct Placeholder {
    std::string strText;
    std::string strFontName;
    double dPointSize = 0;
    double dRed = 0, dGreen = 0, dBlue = 0, dAlpha = 1;

    bool operator==(const Placeholder&) const = default;
};

/// A line of text: an input (whether it is masked is up to the view) or a status line.
class TextField : public Control {
public:
    /// Its text; "" when it is empty.
    std::string text() const { return m_strText.get(); }
    void setText(std::string strText);

    /// Absent until one is given.
    std::optional<Placeholder> placeholder() const { return m_placeholder.get(); }
    void setPlaceholder(Placeholder placeholder);

private:
    Shared<std::string> m_strText;
    Shared<std::optional<Placeholder>> m_placeholder;
};

/// A list to choose one entry from.
class ComboBox : public Control {
public:
    explicit ComboBox(std::vector<std::string> items = {}) : m_content(Content{std::move(items), kNothing}) {}

    /// The position that stands for "nothing selected".
    static constexpr std::int64_t kNothing = -1;

    /// The entries, by position.
    std::vector<std::string> items() const { return m_content.get().items; }
    std::int64_t numberOfItems() const;
    /// A position, or kNothing.
    std::int64_t indexOfSelectedItem() const;

    /// Leaves nothing selected.
    void removeAllItems();
    /// Appends; the selection stays as it is.
    void addItems(const std::vector<std::string>& items);
    /// A position outside the items selects nothing.
    void selectItemAtIndex(std::int64_t nIndex);

private:
    struct Content {
        std::vector<std::string> items;
        std::int64_t nSelected = kNothing;
    };
    Shared<Content> m_content;
};

} // namespace vellux
