// The main thread's queue of calls, free of any toolkit: a toolkit only wakes it.
#pragma once

#include "platform/MainThread.h"
#include "support/Mutex.h"

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <thread>

namespace vellux {

/// First in, first out. The thread that constructs the queue is the main thread.
class CallQueue : public MainThread {
public:
    /// `wake` is called, on the posting thread and with no lock held, after each call that was queued; a
    /// toolkit's loop answers it with runPending(). It may come as late as the last thread that posts ends, also
    /// after close(): what it refers to lives until then. Without one, run() is the loop.
    explicit CallQueue(std::function<void()> wake = {});
    ~CallQueue() override;

    bool isCurrent() const override;
    void post(std::function<void()> call) override;
    bool runAndWait(std::function<void()> call) override;

    /// Main thread: runs what is queued now, including what those calls queue in turn; does not block.
    void runPending();
    /// Main thread: runs calls as they come, until close().
    void run();
    /// Any thread: drops what is queued, frees every waiter and makes all later calls return at once.
    void close();

private:
    struct Call;
    bool enqueue(std::shared_ptr<Call> call);
    void execute(const std::shared_ptr<Call>& call);

    const std::thread::id m_mainThread = std::this_thread::get_id();
    const std::function<void()> m_wake;
    Mutex m_mutex;
    std::condition_variable_any m_changed;
    std::deque<std::shared_ptr<Call>> m_calls VELLUX_GUARDED_BY(m_mutex);
    bool m_bClosed VELLUX_GUARDED_BY(m_mutex) = false;
};

} // namespace vellux
