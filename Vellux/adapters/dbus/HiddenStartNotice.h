// A word to a user whose program started hidden where no tray shows it.
#pragma once

#include "adapters/dbus/StatusNotifierHost.h"

#include <QTimer>

#include <chrono>
#include <functional>

namespace vellux {

/// How long a panel may take at log-in.
inline constexpr std::chrono::milliseconds kLongestWaitForTray = std::chrono::seconds(30);

/// Created with a hidden start; waits once, and does nothing afterwards. Main thread.
class HiddenStartNotice {
public:
    struct Dependencies {
        std::function<bool()> wasTold; ///< whether the user has been told before, maybe in an earlier start
        std::function<void()> tell;    ///< tells the user, and remembers it
    };

    /// `tell` is called on the main thread's loop if no tray has appeared in that time, unless the user was
    /// told before.
    explicit HiddenStartNotice(Dependencies dependencies,
                               std::chrono::milliseconds longestWait = kLongestWaitForTray);

private:
    const Dependencies m_dependencies;
    QTimer m_timer;
    StatusNotifierHost m_host;
};

} // namespace vellux
