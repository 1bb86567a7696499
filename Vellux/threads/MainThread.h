// What the modules ask of the main thread's event loop.
#pragma once

#include "threads/Mutex.h"

#include <functional>

namespace vellux {

/// The main thread as a role that clang's thread-safety analysis knows. It is never locked:
/// assertMainThread() holds it for the rest of a function, and what only the main thread may touch or call is
/// guarded by it or requires it. The analysis doesn't follow calls through std::function, so what is posted
/// to the main thread asserts it.
class VELLUX_CAPABILITY("role") MainThreadRole {};
inline constexpr MainThreadRole mainThreadRole;

/// The thread that runs the toolkit's loop, every user action, the device notices, the event channel's
/// callbacks and the alerts. Calls run in the order in which they were queued.
class MainThread {
public:
    virtual ~MainThread() = default;

    /// Whether the calling thread is the main thread.
    virtual bool isCurrent() const = 0;

    /// Queues a call and returns at once. Any thread. After the loop has been closed the call is dropped.
    virtual void post(std::function<void()> call) = 0;

    /// Runs a call on the main thread and waits until it has returned; at once when the caller is the main
    /// thread. Any thread, with no lock held. Blocks for as long as the main thread is busy. After the loop
    /// has been closed it returns at once, so that quitting never hangs a waiter; the call may then still be
    /// running or never run, so it must own what it captures. Returns whether the call ran to its end.
    virtual bool runAndWait(std::function<void()> call) = 0;
};

/// Ends the program when the calling thread is not the main thread: a bug, never caused by input.
void assertMainThread(const MainThread& mainThread) VELLUX_ASSERT_CAPABILITY(mainThreadRole);

} // namespace vellux
