// The program's status, composed from what client and controller keep.
#pragma once

#include "model/ProgramStatus.h"
#include "threads/MainThread.h"
#include "threads/Observers.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

namespace vellux {

/// What client and controller know. The source of a StatusFeed. Any thread.
ProgramStatus currentStatus();

/// Tells each change of the status, once for any number of changes in one turn of the main thread's loop.
/// Created on the main thread, and destroyed there after every worker thread has ended.
class StatusFeed {
public:
    using Changed = std::function<void(const ProgramStatus& status)>;

    /// `changed` is called on the main thread, soon for the first time, and then only with a status that
    /// differs from the one before.
    StatusFeed(MainThread& mainThread, ProgramStatusSource source, Changed changed);
    ~StatusFeed();
    StatusFeed(const StatusFeed&) = delete;
    StatusFeed& operator=(const StatusFeed&) = delete;

    /// Says that something may have changed. Any thread; returns at once. Client and controller are observed
    /// without it.
    void ask();

private:
    struct Link {
        std::atomic<bool> bQueued{false};
        ProgramStatusSource source VELLUX_GUARDED_BY(mainThreadRole); // both empty once the feed is gone
        Changed changed VELLUX_GUARDED_BY(mainThreadRole);
        ProgramStatus last VELLUX_GUARDED_BY(mainThreadRole); // the one told last
    };

    MainThread& m_mainThread;
    const std::shared_ptr<Link> m_link;
    std::vector<Observation> m_observations;
};

} // namespace vellux
