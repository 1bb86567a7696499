// A desktop for the program, and on it somebody who reads its windows through the accessibility bus.
#pragma once

#include "UserBus.h"

#include <QPair>

/// Has a display, a session bus and the accessibility bus for the programs that are started from now on; they
/// end with this object.
class ScreenReader {
public:
    ScreenReader();
    ~ScreenReader();
    ScreenReader(const ScreenReader&) = delete;
    ScreenReader& operator=(const ScreenReader&) = delete;

    /// The titles of all windows that are on the screen.
    std::vector<std::string> windows() const;
    /// Whether there is this on the screen: a role and a name, and of a text field its text ("label No light
    /// found.", "text Server lync.example").
    bool shows(const std::string& strLine) const;

private:
    using Reference = QPair<QString, QString>; // service and path
    std::vector<Reference> children(const Reference& parent) const;
    std::vector<Reference> shownChildren(const Reference& parent) const;
    std::vector<Reference> shownWindows() const;
    std::string nameOf(const Reference& item) const;

    const XServer m_display{{"-ac"}}; // the programs are the ordinary user's
    UserBus m_session;
    QDBusConnection m_accessibility{"none"};
};
