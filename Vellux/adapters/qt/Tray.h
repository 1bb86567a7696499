// The icon in the desktop's tray, where there is one.
#pragma once

#include "model/ViewState.h"

#include <QString>

#include <functional>
#include <memory>

namespace vellux {

/// What the tray shows.
struct TrayState {
    LampState lamp;
    bool bMarked = false;        ///< something needs attention: there is a mark on the icon
    QString strFollowing;        ///< in words; "" for nothing to say
    QString strPresence;         ///< the status line; "" for none
    QString strConnectTitle;     ///< title of the Connect button, which the menu repeats; "" for none
    bool bConnectEnabled = true; ///< whether that button can be pressed

    bool operator==(const TrayState&) const = default;
};

/// Follows org.kde.StatusNotifierWatcher on the session bus: there is an icon while there is a watcher with a
/// panel to show it, including one that appears later or restarts. Qt's tray is not used before that, since
/// Qt never forgets that there was none. Main thread.
class Tray {
public:
    /// What the menu and a click on the icon do.
    struct Actions {
        std::function<void()> show;
        std::function<void()> connect;
        std::function<void()> exit;
    };

    explicit Tray(Actions actions);
    ~Tray();
    Tray(const Tray&) = delete;
    Tray& operator=(const Tray&) = delete;

    /// Icon, tooltip and menu change only where the state differs from the last one.
    void setState(const TrayState& state);
    /// Whether there is an icon now.
    bool isThere() const;

private:
    class Icon;
    std::unique_ptr<Icon> m_icon;
};

} // namespace vellux
