// The object that the application's life goes through: start-up, reopen, ordered shut-down.
#pragma once

#include "ports/Desktop.h"
#include "threads/Shared.h"
#include "threads/SharedInstance.h"

#include <cstdint>
#include <optional>

/// All operations on the main thread, called by the toolkit (or what stands in for it).
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
    /// window state and gives the devices back. Blocks for a worker's cycle.
    void applicationWillTerminate();
    /// The user started the running program once more: brings the main window to the front; always true.
    bool applicationShouldHandleReopen(bool bHasVisibleWindows);
    /// Nothing depends on whether the windows can be seen.
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

    // Of start-up; the controller counts for itself afterwards.
    std::int32_t nNumberOfVelluxDevices VELLUX_GUARDED_BY(vellux::mainThreadRole) = 0;
    vellux::Window* m_window VELLUX_GUARDED_BY(vellux::mainThreadRole) = nullptr;
    vellux::Shared<std::optional<vellux::ProcessActivity>> m_activity;
};
