// From a change on any thread to a look at it on the main thread.
#pragma once

#include "platform/MainThread.h"

#include <atomic>
#include <functional>
#include <memory>

namespace vellux {

/// Runs one refresh on the main thread for any number of requests made until then. Lives on the main thread, until
/// every thread that asks has ended; a refresh that is still queued then does nothing.
class Refresher {
public:
    /// `refresh` runs on the main thread only.
    Refresher(MainThread& mainThread, std::function<void()> refresh);
    ~Refresher();
    Refresher(const Refresher&) = delete;
    Refresher& operator=(const Refresher&) = delete;

    /// Refreshes at once on the main thread, soon on any other; never waits. Any thread, also after the main thread's
    /// queue was closed.
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
