// Prints what a person would see change in the window.
#pragma once

#include "platform/Changes.h"
#include "platform/Console.h"
#include "threads/Mutex.h"
#include "threads/Observers.h"

#include <string>
#include <vector>

class VelluxWindowUi;

namespace vellux::simulator {

/// Observes the controller's controls for as long as it lives: prints `status TEXT` and `button TITLE` when
/// the status line or the title of the Connect button has become another, and rings the bell for every change
/// of any control.
class WindowWatch {
public:
    /// Main thread, before any other thread writes a control. All arguments must outlive the watch, and the
    /// watch all threads that write controls.
    WindowWatch(VelluxWindowUi& controller, Console& console, Changes& changes);
    WindowWatch(const WindowWatch&) = delete;
    WindowWatch& operator=(const WindowWatch&) = delete;

private:
    void statusWritten();
    void buttonWritten();

    VelluxWindowUi& m_controller;
    Console& m_console;
    Mutex m_mutex; // held while printing, so that lines have the order of the values
    std::string m_strStatus VELLUX_GUARDED_BY(m_mutex);
    std::string m_strButton VELLUX_GUARDED_BY(m_mutex);
    std::vector<Observation> m_observations;
};

} // namespace vellux::simulator
