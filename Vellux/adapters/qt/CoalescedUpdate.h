// From a change on any thread to a look at it on the main thread.
#pragma once

#include "threads/MainThread.h"

#include <atomic>
#include <functional>
#include <memory>

namespace vellux {

/// Runs one refresh on the main thread for any number of requests made until then. Lives on the main thread,
/// until every thread that asks has ended; a refresh that is still queued then does nothing.
class CoalescedUpdate {
public:
    /// `refresh` runs on the main thread only.
    CoalescedUpdate(MainThread& mainThread, std::function<void()> refresh);
    ~CoalescedUpdate();
    CoalescedUpdate(const CoalescedUpdate&) = delete;
    CoalescedUpdate& operator=(const CoalescedUpdate&) = delete;

    /// Refreshes at once on the main thread, soon on any other; never waits. Any thread, also after the main
    /// thread's queue was closed.
    void ask();

private:
    struct Link {
        // Empty once nobody is there to refresh.
        std::function<void()> refresh VELLUX_GUARDED_BY(mainThreadRole);
        std::atomic<bool> bQueued{false};
    };

    MainThread& m_mainThread;
    const std::shared_ptr<Link> m_link;
};

} // namespace vellux
