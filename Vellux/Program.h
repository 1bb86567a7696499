// The program as a whole: the shared objects on the ports of a platform, and the order in which they start
// and end.
#pragma once

#include "ports/Clock.h"
#include "ports/Desktop.h"
#include "ports/HidManager.h"
#include "ports/HttpTransport.h"
#include "threads/CallQueue.h"

namespace vellux {

/// One a process; whoever has a main, and each test's fixture, starts and ends it the same way. Main thread,
/// unless said otherwise.
class Program {
public:
    /// What it runs on. All of it outlives the program.
    struct Ports {
        HidManager& hidManager;
        HttpTransport& httpTransport;
        CallQueue& mainThread;
        Clock& clock;
        Desktop& desktop;
    };

    /// Installs the ports as the platform, with the shared controller as its listener.
    explicit Program(const Ports& ports);
    /// Ends it, unless that has been done.
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    /// Keeps the main window, which outlives the program, and brings it to the front.
    void show(Window& window);
    /// Finds the lights and configures the controller, which may sign in by itself.
    void start();

    /// Has the desktop end the application, and frees a main thread that waits for an answer of the network
    /// or for a light that hangs, so that it soon gets to that. Any thread; doesn't block.
    void requestEnd();

    /// Ends what the program does, once: the light goes off, the window's state is saved, and every other
    /// thread has ended when it returns. Blocks for a flashing worker's cycle and for reports to a light.
    void end();

private:
    const Ports m_ports;
    bool m_bEnded = false;
};

} // namespace vellux
