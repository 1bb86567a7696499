// The bell that rings whenever something in the simulation changes, for those who wait for a state.
#pragma once

#include "threads/Mutex.h"
#include "threads/Observers.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <utility>

namespace vellux::simulator {

/// Any thread.
class Changes {
public:
    /// Something has changed, and can be seen to have changed. Never called with a lock held that a condition
    /// takes.
    void notify();

    /// Calls the observer for each change, on the thread that made it. What it refers to outlives those
    /// threads.
    [[nodiscard]] Observation observe(std::function<void()> observer) {
        return m_observers.add(std::move(observer));
    }

    /// Ends all waits, and every later one at once.
    void end();
    bool hasEnded() const;

    /// Blocks until the condition holds, the time is over or end() is called; true when it holds. The
    /// condition is tried on the calling thread, at once and after each change, with no lock held.
    bool waitUntil(const std::function<bool()>& holds, std::chrono::milliseconds limit) const;

private:
    mutable Mutex m_mutex;
    mutable std::condition_variable_any m_changed;
    std::uint64_t m_nChanges VELLUX_GUARDED_BY(m_mutex) = 0;
    bool m_bEnded VELLUX_GUARDED_BY(m_mutex) = false;
    Observers<> m_observers;
};

} // namespace vellux::simulator
