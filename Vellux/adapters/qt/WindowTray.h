// The tray's icon as another view of what the window shows.
#pragma once

#include "adapters/qt/Tray.h"
#include "app/Choices.h"
#include "app/Following.h"
#include "threads/CoalescedUpdate.h"
#include "threads/MainThread.h"
#include "threads/Observable.h"

#include <vector>

class VelluxWindowUi;

namespace vellux {

class Window;

/// Shows lamp, following and status line in the tray; its menu does what the window's buttons do. Main
/// thread; any thread may write what it shows, and it must outlive them all.
class WindowTray {
public:
    /// All of these outlive the tray.
    struct Dependencies {
        MainThread& mainThread;
        VelluxWindowUi& controller;
        Window& window;
        Following& following;
        Observable<Choices>& choices;
    };

    explicit WindowTray(Dependencies dependencies);
    WindowTray(const WindowTray&) = delete;
    WindowTray& operator=(const WindowTray&) = delete;

    /// Whether there is an icon now.
    bool isThere() const { return m_tray.isThere(); }

private:
    void refresh();

    const Dependencies m_dependencies;
    Tray m_tray;
    CoalescedUpdate m_update;
    std::vector<Observation> m_observations;
};

} // namespace vellux
