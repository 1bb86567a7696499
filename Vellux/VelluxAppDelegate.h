// The application delegate: start-up, reopen, and the shut-down's steps in order.
#pragma once

#include "ports/Desktop.h"
#include "threads/Shared.h"
#include "threads/SharedInstance.h"

#include <cstdint>
#include <optional>

/// Main thread only, except for the activity; called by Program and the toolkit.
class VelluxAppDelegate {
public:
    /// The one instance.
    static VelluxAppDelegate& sharedVelluxAppDelegate();
    VelluxAppDelegate(const VelluxAppDelegate&) = delete;
    VelluxAppDelegate& operator=(const VelluxAppDelegate&) = delete;

    /// Start-up, once: keeps the system awake, finds the lights, darkens the first, configures the
    /// controller.
    void applicationDidFinishLaunching();
    /// Shut-down, once: ends both flashing workers and the event channel, leaves the light off, saves the
    /// window state and releases the devices. Blocks for up to one flash cycle (1.5 s).
    void applicationWillTerminate();
    /// The user started the program again while it was running: brings the main window to the front. Always
    /// true.
    bool applicationShouldHandleReopen(bool bHasVisibleWindows);
    /// Does nothing: nothing depends on whether the windows can be seen.
    void applicationDidChangeOcclusionState();

    /// The main window, not owned; null until the toolkit has loaded it.
    vellux::Window* window() const VELLUX_REQUIRES(vellux::mainThreadRole) { return m_window; }
    void setWindow(vellux::Window* window) VELLUX_REQUIRES(vellux::mainThreadRole) { m_window = window; }

    /// What keeps the system from suspending the program; absent on a platform without that service.
    std::optional<vellux::ProcessActivity> activity() const { return m_activity.get(); }
    void setActivity(const std::optional<vellux::ProcessActivity>& activity) { m_activity.set(activity); }

private:
    static vellux::SharedInstanceSlot<VelluxAppDelegate> sharedVelluxAppDelegateInstance;

    VelluxAppDelegate() = default;

    // As counted at start-up; the controller keeps a count of its own.
    std::int32_t nNumberOfVelluxDevices VELLUX_GUARDED_BY(vellux::mainThreadRole) = 0;
    vellux::Window* m_window VELLUX_GUARDED_BY(vellux::mainThreadRole) = nullptr;
    vellux::Shared<std::optional<vellux::ProcessActivity>> m_activity;
};
