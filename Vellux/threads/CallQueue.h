// The main thread's queue of calls, free of any toolkit: a toolkit only wakes it.
#pragma once

#include "threads/MainThread.h"
#include "threads/Mutex.h"

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <thread>

namespace vellux {

/// First in, first out. The thread that constructs the queue is the main thread.
class CallQueue : public MainThread {
public:
    /// `wake` asks a toolkit's loop to call runPending(). It is called with no lock held: on the posting
    /// thread after each call it queues, and on the main thread before a call that leaves others waiting. It
    /// may be called until the last posting thread has exited, even after close(); captured references must
    /// outlive those threads. Without it, run() is the loop.
    explicit CallQueue(std::function<void()> wake = {});
    ~CallQueue() override;

    bool isCurrent() const override;
    void post(std::function<void()> call) override;
    bool runAndWait(std::function<void()> call) override;

    /// Main thread: one turn. Runs those of the calls queued so far that can start within 50 ms, but at least
    /// one; does not block. Then it is the toolkit's turn, so that calls that queue calls never starve it;
    /// for calls that are left it has been woken again. A loop inside a call, such as an open alert's, takes
    /// turns of its own and continues with the next call in order. True when calls are left.
    bool runPending();
    /// Main thread: runs calls as they come, until close().
    void run();
    /// Any thread: drops what is queued, frees every waiter and makes all later calls return at once.
    void close();

private:
    struct Call;
    bool enqueue(std::shared_ptr<Call> call);
    bool runNext(std::uint64_t nLast);
    void execute(const std::shared_ptr<Call>& call);

    const std::thread::id m_mainThread = std::this_thread::get_id();
    const std::function<void()> m_wake;
    Mutex m_mutex;
    std::condition_variable_any m_changed;
    std::deque<std::shared_ptr<Call>> m_calls VELLUX_GUARDED_BY(m_mutex);
    std::uint64_t m_nTaken VELLUX_GUARDED_BY(m_mutex) = 0; // calls that have left the queue
    bool m_bClosed VELLUX_GUARDED_BY(m_mutex) = false;
};

} // namespace vellux
