// A main thread's queue whose callers can be awaited.
#pragma once

#include "threads/CallQueue.h"

#include <atomic>
#include <thread>
#include <utility>

/// Knows how many calls have been posted.
class CountingQueue : public vellux::CallQueue {
public:
    void post(std::function<void()> call) override {
        CallQueue::post(std::move(call));
        ++nPosted;
    }
    /// Waits until so many calls have been posted since the last call, and leaves them queued.
    void waitUntilPosted(int nCalls) {
        while (nPosted < nCalls)
            std::this_thread::yield();
        nPosted -= nCalls;
    }
    std::atomic<int> nPosted = 0;
};
