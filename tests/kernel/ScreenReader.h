// A desktop for the program, and on it somebody who reads its windows through the accessibility bus.
#pragma once

#include "UserBus.h"

#include <QPair>

#include <optional>
#include <string>
#include <vector>

/// Has a display, a session bus and the accessibility bus for the programs that are started from now on; they end with
/// this object.
class ScreenReader {
public:
    ScreenReader();
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    /// The titles of all windows that are on the screen.
    std::vector<std::string> windows() const;
    /// Whether a label on the screen says this.
    bool says(const std::string& strLine) const;
    /// What stands in the text field of this name; absent when there is none on the screen.
    std::optional<std::string> field(const std::string& strName) const;

private:
    using Reference = QPair<QString, QString>; // service and path
    struct Item;
    std::vector<Reference> children(const Reference& parent) const;
    bool isShowing(const Reference& reference) const;
    std::vector<Item> shownChildren(const Reference& parent) const;
    std::vector<Item> shownWindows() const;
    std::vector<Item> shownItems() const;

    const XServer m_display{{"-ac"}}; // the programs are the ordinary user's
    UserBus m_session;
    QDBusConnection m_accessibility{"none"};
};
