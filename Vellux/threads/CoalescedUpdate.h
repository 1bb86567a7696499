// Refreshes on the main thread after changes on any thread.
#pragma once

#include "threads/MainThread.h"

#include <atomic>
#include <functional>
#include <memory>

namespace vellux {

/// Runs one refresh on the main thread for any number of requests before it. Created on the main thread, and
/// destroyed there after every thread that asks has ended, but for those with an asker; a refresh that is
/// still queued then does nothing.
class CoalescedUpdate {
public:
    /// `refresh` runs on the main thread only.
    CoalescedUpdate(MainThread& mainThread, std::function<void()> refresh);
    ~CoalescedUpdate();
    CoalescedUpdate(const CoalescedUpdate&) = delete;
    CoalescedUpdate& operator=(const CoalescedUpdate&) = delete;

    /// Refreshes at once on the main thread, soon on any other; never waits. Any thread, also after the main
    /// thread's queue was closed.
    void ask() { ask(m_mainThread, m_link); }
    /// Does what ask() does, also while the object is destroyed and after that, when it does nothing: for
    /// observers on threads that end later. The main thread outlives it.
    std::function<void()> asker() const;

private:
    struct Link {
        // Empty after the destruction of the object.
        std::function<void()> refresh VELLUX_GUARDED_BY(mainThreadRole);
        std::atomic<bool> bQueued{false};
    };

    static void ask(MainThread& mainThread, const std::shared_ptr<Link>& link);

    MainThread& m_mainThread;
    const std::shared_ptr<Link> m_link;
};

} // namespace vellux
