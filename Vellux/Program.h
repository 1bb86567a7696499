// The program as a whole: the shared objects on the ports of a platform, and the order in which they start
// and end.
#pragma once

#include "ports/Clock.h"
#include "ports/Desktop.h"
#include "ports/HidManager.h"
#include "ports/HttpTransport.h"
#include "threads/CallQueue.h"

namespace vellux {

/// One per process: every main, and each test's fixture, starts and ends it the same way. Main thread only,
/// unless noted.
class Program {
public:
    /// The ports it runs on, all of which outlive it.
    struct Ports {
        HidManager& hidManager;
        HttpTransport& httpTransport;
        CallQueue& mainThread;
        Clock& clock;
        Desktop& desktop;
    };

    /// Installs the ports as the platform, with the shared controller as its listener.
    explicit Program(const Ports& ports);
    /// Calls end() unless that has been done.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Registers the main window, which must outlive the program, and brings it to the front, unless it is to
    /// start hidden.
    void show(Window& window, bool bHidden = false);
    /// Finds the lights and configures the controller, which may sign in by itself.
    void start();

    /// Asks the desktop to end the application, and unblocks a main thread that waits for the network or for
    /// a light that hangs, so that it soon gets to that. Any thread; doesn't block.
    void requestEnd();

    /// Shuts the program down, once: the light goes off, the window state is saved, and when it returns all
    /// worker threads have ended. Blocks for up to one flash cycle (1.5 s) and for reports to a light.
    void end();

private:
    const Ports m_ports;
    bool m_bEnded = false;
};

} // namespace vellux
