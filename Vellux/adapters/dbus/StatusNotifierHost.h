// Whether the desktop has a tray.
#pragma once

#include <functional>
#include <memory>

namespace vellux {

class StatusNotifierListener;

/// Follows org.kde.StatusNotifierWatcher on the session bus for as long as it lives. A tray is there once a
/// watcher says that a panel shows its items, which at log-in is later than the watcher itself. Main thread.
class StatusNotifierHost {
public:
    /// `changed` is called on the main thread's loop: alternately with true when a tray has appeared and with
    /// false when its watcher has gone. Without a session bus it is never called.
    explicit StatusNotifierHost(std::function<void(bool bPresent)> changed);
    ~StatusNotifierHost();
    StatusNotifierHost(const StatusNotifierHost&) = delete;
    StatusNotifierHost& operator=(const StatusNotifierHost&) = delete;

private:
    std::unique_ptr<StatusNotifierListener> m_listener;
};

} // namespace vellux
