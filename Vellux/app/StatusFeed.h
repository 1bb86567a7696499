// What other programs are told, composed from what client and controller keep.
#pragma once

#include "app/Following.h"
#include "model/ProgramStatus.h"
#include "threads/MainThread.h"
#include "threads/Observers.h"

#include <atomic>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

namespace vellux {

/// Tells each change of the status, once for any number of changes in one turn of the main thread's loop.
/// Created on the main thread, and destroyed there after every worker thread has ended.
class StatusFeed {
public:
    using Changed = std::function<void(const ProgramStatus& status)>;

    /// All of these outlive it.
    struct Dependencies {
        MainThread& mainThread;
        VelluxWindowUi& controller;
        VelluxHttp& client;
        Following& following;
    };

    /// `changed` is called on the main thread, soon for the first time, and then only with a status that
    /// differs from the one before.
    StatusFeed(const Dependencies& dependencies, Changed changed);
    ~StatusFeed();
    StatusFeed(const StatusFeed&) = delete;
    StatusFeed& operator=(const StatusFeed&) = delete;

    /// Says that something may have changed. Any thread; returns at once. What it is made from is
    /// observed without it.
    void ask();

private:
    struct Link {
        Link(const Dependencies& itsDependencies, Changed itsChanged)
            : dependencies(itsDependencies), changed(std::move(itsChanged)) {}
        const Dependencies dependencies;
        Changed changed VELLUX_GUARDED_BY(mainThreadRole); // empty once the feed is gone
        std::atomic<bool> bQueued{false};
        ProgramStatus last VELLUX_GUARDED_BY(mainThreadRole); // the one told last
    };

    MainThread& m_mainThread;
    const std::shared_ptr<Link> m_link;
    std::vector<Observation> m_observations;
};

} // namespace vellux
