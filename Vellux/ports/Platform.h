// The one object through which the modules reach the world.
#pragma once

#include "ports/Clock.h"
#include "ports/Desktop.h"
#include "ports/HidManager.h"
#include "ports/HttpTransport.h"
#include "ports/Threads.h"
#include "threads/MainThread.h"

namespace vellux {

/// References to all ports. Whoever installs it owns what it refers to, and keeps that alive until every
/// worker thread has ended.
struct Platform {
    HidManager& hidManager;
    HttpTransport& httpTransport;
    MainThread& mainThread;
    Clock& clock;
    Threads& threads;
    Desktop& desktop;
};

/// Installs the ports; called once, by main() or by a test's fixture, before anything else of the product.
void installPlatform(const Platform& platform);

/// The installed ports. Any thread.
const Platform& platform();

/// Ends the program when the calling thread is not the main thread: a fault of ours, never of the input.
void assertMainThread() VELLUX_ASSERT_CAPABILITY(mainThreadRole);
/// The same for what is given its main thread instead of a platform.
void assertMainThread(const MainThread& mainThread) VELLUX_ASSERT_CAPABILITY(mainThreadRole);

} // namespace vellux
