// The one object through which the modules reach the world.
#pragma once

#include "ports/Clock.h"
#include "ports/Desktop.h"
#include "ports/HidManager.h"
#include "ports/HttpTransport.h"
#include "ports/Listener.h"
#include "threads/MainThread.h"

namespace vellux {

/// References to all ports, and to the listener that the driver and the client report to. Whoever installs it
/// keeps what it refers to alive until every worker thread has ended.
struct Platform {
    HidManager& hidManager;
    HttpTransport& httpTransport;
    MainThread& mainThread;
    Clock& clock;
    Desktop& desktop;
    Listener& listener;
};

/// Installs the ports; once a process, before anything else of the product.
void installPlatform(const Platform& platform);

/// The installed ports. Any thread. Without an installation the program ends.
const Platform& platform();

/// Ends the program when the calling thread is not the installed platform's main thread.
void assertMainThread() VELLUX_ASSERT_CAPABILITY(mainThreadRole);

} // namespace vellux
