// The tray's icon as another view of what the window shows.
#pragma once

#include "adapters/qt/Refresher.h"
#include "adapters/qt/Tray.h"
#include "platform/MainThread.h"
#include "platform/ViewState.h"
#include "support/Observers.h"

#include <vector>

class VelluxWindowUi;

namespace vellux {

class Window;

/// Shows lamp and status line in the tray; its menu does what the window's buttons do. Main thread; what it shows is
/// written by any thread, and it must outlive all of them.
class WindowTray {
public:
    /// All of these outlive the tray.
    struct Surroundings {
        MainThread& mainThread;
        VelluxWindowUi& controller;
        Window& window;
    };

    explicit WindowTray(Surroundings surroundings);
    WindowTray(const WindowTray&) = delete;
    WindowTray& operator=(const WindowTray&) = delete;

private:
    void refresh();

    const Surroundings m_around;
    Tray m_tray;
    Refresher m_refresher;
    std::vector<Observation> m_observations;
};

} // namespace vellux
