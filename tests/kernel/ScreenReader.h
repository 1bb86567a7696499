// A desktop for the program, and on it somebody who reads its windows through the accessibility bus.
#pragma once

#include "World.h"

#include <QDBusConnection>
#include <QPair>

#include <optional>
#include <string>
#include <vector>

/// Starts a display, a session bus and the accessibility bus for the ordinary user; they end with this object.
/// One at a time.
class ScreenReader {
public:
    ScreenReader();
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    /// What a program needs to show itself here.
    void addTo(Program::Environment& environment) const;

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

    std::string m_strDisplay;
    QDBusConnection m_session{"none"};
    QDBusConnection m_accessibility{"none"};
};
