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
    QString strPresence;         ///< the status line; "" for none
    QString strConnectTitle;     ///< title of the Connect button, which the menu repeats; "" for none
    bool bConnectEnabled = true; ///< whether that button can be pressed

    bool operator==(const TrayState&) const = default;
};

/// Follows org.kde.StatusNotifierWatcher on the session bus: an icon is there while a watcher is that has a
/// panel to show it, also one that comes later or restarts. Nothing is asked of Qt's tray before that, since
/// Qt remembers for good that there was none. Main thread.
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

private:
    class Icon;
    std::unique_ptr<Icon> m_icon;
};

} // namespace vellux
